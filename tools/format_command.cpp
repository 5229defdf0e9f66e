// The format command: AppendFormat over typed arguments from the command
// line. The format is walked here as AppendFormat walks it, so every
// directive that reads an argument is paired with an ARG of its own kind
// before anything is appended; AppendFormat then gets one such directive
// per call, with the text before it, and a value of the type it reads.
// Appending piece by piece gives what one call with all values would.
#include <charconv>
#include <cstring>
#include <string>
#include <vector>

#include "cli.h"
#include "core/veskstring.h"

namespace vesktext {

namespace {

// The directives that read an argument.
bool TakesArgument(char directive) {
  return directive != '\0' && std::strchr("dxcb2s3fp", directive) != nullptr;
}

const char* KindOf(char directive) {
  switch (directive) {
    case 's': return "s:TEXT";
    case '3': return "3:TEXT";
    case 'f': return "f:NUMBER";
    case 'p': return "p:HEX";
    case 'd': return "d:INT";
    case 'x': return "x:INT";
    case 'c': return "c:INT";
    case 'b': return "b:INT";
    default: return "2:INT";
  }
}

// One directive and what goes with it: the format text since the previous
// one, the directive last.
struct Piece {
  std::string format;
  char directive;
  int index;        // 1-based, among the directives that read an argument
  std::string arg;  // the whole ARG
};

UsageError BadValue(const Piece& piece, const char* problem) {
  return UsageError("argument " + std::to_string(piece.index) + " '" +
                    piece.arg + "' " + problem);
}

template <class Number>
Number ParseNumber(const Piece& piece, const char* problem, int base = 10) {
  const std::string value = piece.arg.substr(2);
  const char* begin = value.data();
  const char* end = begin + value.size();
  if (base == 16 && value.compare(0, 2, "0x") == 0) begin += 2;
  Number number{};
  const auto result = std::from_chars(begin, end, number, base);
  if (begin == end || result.ec != std::errc() || result.ptr != end) {
    throw BadValue(piece, problem);
  }
  return number;
}

double ParseDouble(const Piece& piece) {
  const std::string value = piece.arg.substr(2);
  const char* end = value.data() + value.size();
  double number = 0;
  const auto result = std::from_chars(value.data(), end, number);
  if (value.empty() || result.ec != std::errc() || result.ptr != end) {
    throw BadValue(piece, "is not a number");
  }
  return number;
}

void Append(VeskString& out, const Piece& piece) {
  const char* format = piece.format.c_str();
  switch (piece.directive) {
    case 's': out.AppendFormat(format, piece.arg.c_str() + 2); break;
    case '3':
      // %3 reads three bytes whatever the text: a shorter one is refused.
      if (piece.arg.size() < 5) throw BadValue(piece, "is under three bytes");
      out.AppendFormat(format, piece.arg.c_str() + 2);
      break;
    case 'f': out.AppendFormat(format, ParseDouble(piece)); break;
    case 'p': {
      const auto address =
          ParseNumber<unsigned long>(piece, "is not a hex address", 16);
      out.AppendFormat(format, reinterpret_cast<void*>(address));
      break;
    }
    default:
      out.AppendFormat(format,
                       ParseNumber<int>(piece, "is not a 32-bit decimal int"));
      break;
  }
}

// Splits `format` at the directives that read an argument and pairs each
// with the next ARG; the format text after the last one is `tail`.
std::vector<Piece> Pair(const std::string& format,
                        const std::vector<std::string>& args,
                        std::string* tail) {
  std::vector<Piece> pieces;
  std::string text;
  for (std::size_t i = 0; i < format.size(); ++i) {
    text += format[i];
    if (format[i] != '%' || i + 1 == format.size()) continue;
    const char directive = format[++i];
    text += directive;
    if (!TakesArgument(directive)) continue;  // "%%" and the like
    const int index = static_cast<int>(pieces.size()) + 1;
    const std::string name = std::string("directive ") + std::to_string(index) +
                             " (%" + directive + ")";
    if (pieces.size() == args.size()) throw UsageError(name + " has no ARG");
    const std::string& arg = args[pieces.size()];
    if (arg.size() < 2 || arg[0] != directive || arg[1] != ':') {
      throw UsageError("argument " + std::to_string(index) + " '" + arg +
                       "' does not fit " + name + ", which takes " +
                       KindOf(directive));
    }
    pieces.push_back({text, directive, index, arg});
    text.clear();
  }
  if (pieces.size() < args.size()) {
    throw UsageError("argument " + std::to_string(pieces.size() + 1) + " '" +
                     args[pieces.size()] + "' has no directive");
  }
  *tail = text;
  return pieces;
}

}  // namespace

int RunFormat(const Invocation& invocation) {
  const std::vector<std::string>& operands = invocation.operands;
  if (operands.empty()) throw UsageError("no FORMAT given");
  const std::vector<std::string> args(operands.begin() + 1, operands.end());
  std::string tail;
  const std::vector<Piece> pieces = Pair(operands[0], args, &tail);
  VeskString out;
  for (const Piece& piece : pieces) Append(out, piece);
  out.AppendFormat(tail.c_str());  // reads no argument
  PrintLine(out);
  return 0;
}

}  // namespace vesktext
