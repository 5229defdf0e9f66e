// The commands over text beside the encodings: queries, stripping and
// number reading, each a thin layer over one module operation.
#include <cstdio>
#include <cstring>
#include <string>

#include "cli.h"
#include "core/veskstring.h"
#include "host/object_model.h"

namespace vesktext {

namespace {

// strip, line by line in pieces: leading whitespace goes as it comes; the
// scheme and its slashes are read once the first other byte and as many
// bytes as they may take are in, or the line's end; the rest is copied.
class Stripper {
 public:
  explicit Stripper(const char* scheme) : m_scheme(scheme) {}

  std::size_t Feed(const LinePiece& piece) {
    const char* text = piece.text;
    const std::size_t n = piece.size;
    std::size_t from = 0;
    if (m_state == State::kLead) {
      from = static_cast<std::size_t>(StripWhitespace(text) - text);
      if (from == n && !piece.lineEnd) return n;
      if (m_scheme != nullptr && n - from < std::strlen(m_scheme) + 2 &&
          !piece.lineEnd) {
        return from;  // the scheme may go on in the next piece
      }
      from = Start(piece, from);
    }
    if (m_state == State::kCopy) Write(text + from, n - from);
    if (piece.lineEnd) {
      EndLine(m_state == State::kCopy);
      m_state = State::kLead;
    }
    return n;
  }

  int status() const { return m_status; }

 private:
  enum class State { kLead, kCopy, kSkip };

  // Steps over the scheme at text[from], if one is asked for; a line
  // without it is reported and left out.
  std::size_t Start(const LinePiece& piece, std::size_t from) {
    m_state = State::kCopy;
    if (m_scheme == nullptr) return from;
    const char* rest = StripScheme(piece.text + from, m_scheme);
    if (rest != nullptr) {
      return static_cast<std::size_t>(StripAtMostTwoSlashes(rest) - piece.text);
    }
    const std::string what =
        piece.operand ? "'" + std::string(piece.text) + "'" : Where(piece);
    std::fflush(stdout);  // after the lines before it
    std::fprintf(stderr, "vesktext: strip: %s does not start with '%s'\n",
                 what.c_str(), m_scheme);
    m_status = 1;
    m_state = State::kSkip;
    return piece.size;
  }

  const char* const m_scheme;
  State m_state = State::kLead;
  int m_status = 0;
};

// parse, line by line in pieces: the '-' and digits at the start of a line
// are gathered and the rest of it skipped. Of a longer run of digits the
// last 64 are enough: the module's value wraps modulo 2^64, and 10^64 is a
// multiple of 2^64, so digits before them add nothing to it.
class NumberReader {
 public:
  explicit NumberReader(bool isUnsigned) : m_isUnsigned(isUnsigned) {}

  std::size_t Feed(const LinePiece& piece) {
    for (std::size_t i = 0; m_reading && i < piece.size; ++i) {
      const char c = piece.text[i];
      if ((c == '-' && piece.offset + i == 0) || (c >= '0' && c <= '9')) {
        m_number += c;
      } else {
        m_reading = false;
      }
      const std::size_t sign = m_number[0] == '-' ? 1 : 0;
      if (m_number.size() > sign + 2 * kDigitsKept) {
        m_number.erase(sign, m_number.size() - sign - kDigitsKept);
      }
    }
    if (piece.lineEnd) Print();
    return piece.size;
  }

 private:
  static constexpr std::size_t kDigitsKept = 64;

  void Print() {
    const char* text = m_number.c_str();
    const std::string number = m_isUnsigned ? std::to_string(ToUInt64(text))
                                            : std::to_string(ToInt64(text));
    Write(number.data(), number.size());
    EndLine(true);
    m_number.clear();
    m_reading = true;
  }

  const bool m_isUnsigned;
  std::string m_number;
  bool m_reading = true;
};

}  // namespace

int RunQuery(const Invocation& invocation) {
  const std::vector<std::string>& operands = invocation.operands;
  if (operands.empty()) throw UsageError("no BASE given");
  auto object = ScriptObject::Create();
  for (std::size_t i = 1; i < operands.size(); ++i) {
    const std::size_t equals = operands[i].find('=');
    if (equals == std::string::npos) {
      throw UsageError("'" + operands[i] + "' is not NAME=VALUE");
    }
    object->SetVariable(
        operands[i].substr(0, equals).c_str(),
        ScriptAtom::FromString(operands[i].c_str() + equals + 1));
  }
  CorePlayer player;
  player.convertToCodePage = invocation.Has("--convert");
  VeskString url(operands[0].c_str());
  url.EncodeVariables(&player, object, ContentVersion(invocation),
                      invocation.Has("--no-question-mark"));
  PrintLine(url);
  return 0;
}

int RunStrip(const Invocation& invocation) {
  const auto scheme = invocation.options.find("--scheme");
  Stripper stripper(scheme != invocation.options.end() ? scheme->second.c_str()
                                                       : nullptr);
  ForEachLine(invocation.operands, [&stripper](const LinePiece& piece) {
    return stripper.Feed(piece);
  });
  return stripper.status();
}

int RunParse(const Invocation& invocation) {
  NumberReader reader(invocation.Has("--unsigned"));
  ForEachLine(invocation.operands,
              [&reader](const LinePiece& piece) { return reader.Feed(piece); });
  return 0;
}

}  // namespace vesktext
