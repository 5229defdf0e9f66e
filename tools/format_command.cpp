// The format command: AppendFormat over typed arguments from the command
// line. The format is walked here as AppendFormat walks it, so every
// directive that reads an argument is paired with an ARG of its own kind
// before anything is appended; AppendFormat then gets one such directive
// per call, with the text before it, and a value of the type it reads.
// Appending piece by piece gives what one call with all values would.
#include <charconv>
#include <cstdio>
#include <iterator>
#include <string>
#include <type_traits>
#include <vector>

#include "cli.h"
#include "core/veskstring.h"

namespace vesktext {

namespace {

// The directives that read an argument, with the kind of value each reads
// and what it makes of it.
struct Directive {
  char letter;
  const char* kind;  // INT, TEXT, NUMBER or HEX
  const char* meaning;
};
constexpr Directive kDirectives[] = {
    {'d', "INT", "decimal"},        {'x', "INT", "hex, sign-extended"},
    {'c', "INT", "its low byte"},   {'b', "INT", "'t' if not 0, or 'f'"},
    {'2', "INT", "0-padded to 2"},  {'s', "TEXT", "the text"},
    {'3', "TEXT", "first 3 bytes"}, {'f', "NUMBER", "shortest exact text"},
    {'p', "HEX", "\"0x\" and hex"},
};

const Directive* FindDirective(char letter) {
  for (const Directive& directive : kDirectives) {
    if (directive.letter == letter) return &directive;
  }
  return nullptr;
}

// One directive and what goes with it: the format text since the previous
// one, the directive last.
struct Piece {
  std::string format;
  const Directive* directive;
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
  std::from_chars_result result{};
  if constexpr (std::is_floating_point_v<Number>) {
    result = std::from_chars(begin, end, number);  // "inf" and "nan" too
  } else {
    result = std::from_chars(begin, end, number, base);
  }
  if (begin == end || result.ec != std::errc() || result.ptr != end) {
    throw BadValue(piece, problem);
  }
  return number;
}

void Append(VeskString& out, const Piece& piece) {
  const char* format = piece.format.c_str();
  const std::string kind = piece.directive->kind;
  if (kind == "TEXT") {
    // %3 reads three bytes whatever the text: a shorter one is refused.
    if (piece.directive->letter == '3' && piece.arg.size() < 5) {
      throw BadValue(piece, "is under three bytes");
    }
    out.AppendFormat(format, piece.arg.c_str() + 2);
  } else if (kind == "NUMBER") {
    out.AppendFormat(format, ParseNumber<double>(piece, "is not a number"));
  } else if (kind == "HEX") {
    const auto address =
        ParseNumber<unsigned long>(piece, "is not a hex address", 16);
    out.AppendFormat(format, reinterpret_cast<void*>(address));
  } else {
    out.AppendFormat(format,
                     ParseNumber<int>(piece, "is not a 32-bit decimal int"));
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
    const char letter = format[++i];
    text += letter;
    const Directive* directive = FindDirective(letter);
    if (directive == nullptr) continue;  // "%%" and the like
    const int index = static_cast<int>(pieces.size()) + 1;
    const std::string name = std::string("directive ") + std::to_string(index) +
                             " (%" + letter + ")";
    if (pieces.size() == args.size()) throw UsageError(name + " has no ARG");
    const std::string& arg = args[pieces.size()];
    if (arg.size() < 2 || arg[0] != letter || arg[1] != ':') {
      throw UsageError("argument " + std::to_string(index) + " '" + arg +
                       "' does not fit " + name + ", which takes " + letter +
                       ":" + directive->kind);
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

std::string DirectiveHelp() {
  std::string help;
  char entry[48];
  for (std::size_t i = 0; i < std::size(kDirectives); ++i) {
    const Directive& d = kDirectives[i];
    std::snprintf(entry, sizeof entry,
                  i % 2 == 0 ? "  %%%c  %c:%-7s %-16s" : "  %%%c  %c:%-7s %s\n",
                  d.letter, d.letter, d.kind, d.meaning);
    help += entry;
  }
  return help + "  %%            '%'\n";  // after the last, on its left
}

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
