// What the vesktext commands share: the command table entry, usage and run
// errors, option reading, the text sources and the output.
#ifndef VESK_TOOLS_CLI_H
#define VESK_TOOLS_CLI_H

#include <cstddef>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "core/veskstring.h"
#include "host/text_services.h"

class VeskString;

namespace vesktext {

// A command line the tool cannot carry out: printed with the usage, exit 2.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A failure while carrying a command out: printed, exit 1.
class RunError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A command line after the command name, options taken apart.
struct Invocation {
  std::map<std::string, std::string> options;  // given ones; "" for flags
  std::vector<std::string> operands;
  bool help = false;

  bool Has(const char* name) const { return options.count(name) != 0; }
};

struct Command {
  const char* name;
  const char* synopsis;  // after "vesktext [--codepage NAME] ", wrapped
  const char* summary;   // its line in the tool's help
  std::string details;   // the rest of its help
  int (*run)(const Invocation& invocation);  // returns the exit status
};

// Options, those of the command's synopsis, may come anywhere before a
// "--"; "--name=value" and "--name value" both give a value. --help (-h)
// and --codepage are every command's.
Invocation Parse(const Command& command, const std::vector<std::string>& args);

// Sets the host code page, named in either case by any of its names; an
// unknown name is a usage error.
void SetCodePage(const std::string& name);

// Content is UTF-8 from kFirstUtf8Version on, the default for text typed
// today; kBeforeUtf8 is a version whose content is taken as it is.
constexpr int kDefaultContentVersion = kFirstUtf8Version;
constexpr int kBeforeUtf8 = kFirstUtf8Version - 1;
// The --content-version given, or the default; one that is not an int of
// 0 or more is a usage error.
int ContentVersion(const Invocation& invocation);

// Bytes of one line, or of one TEXT operand, handed to a command.
struct LinePiece {
  char* text;  // text[size] is a NUL
  std::size_t size;
  bool lineEnd;          // the piece runs to the end of its line
  unsigned long line;    // the line's number, or the TEXT's, from 1
  unsigned long offset;  // bytes of the line before text[0]
  bool operand;          // a TEXT rather than a line of standard input
};

// Takes bytes from the front of a piece and returns how many; a piece that
// runs to the end of its line must be taken whole. What is left comes
// again at the front of the next piece, with more bytes after it.
using PieceFeed = std::function<std::size_t(const LinePiece& piece)>;

// "line 3 of standard input" or "TEXT 2".
std::string Where(const LinePiece& piece);

// What the heap failure being handled means to a user ("no memory left
// for the result"), or null for any other exception.
const char* HeapFailure();

// Feeds every operand, whole, or when there is none every line of standard
// input, its '\n' taken off and its other bytes as they are, in pieces of
// bounded size. A line holding a NUL byte is a run error naming its place:
// no C text goes past one. Tells a terminal that lines are read.
void ForEachLine(const std::vector<std::string>& operands,
                 const PieceFeed& feed);

// Writes `n` bytes to standard output, and the '\n' that ends a line.
void Write(const char* bytes, std::size_t n);
void EndLine(bool lineEnd);
// The string's bytes up to Length(); a zeroed string prints an empty line.
void PrintLine(const VeskString& text);

// The lines of the format command's help that list its directives.
std::string DirectiveHelp();

// The commands, one per module operation.
int RunForm(const Invocation& invocation);
int RunHigh(const Invocation& invocation);
int RunEscape(const Invocation& invocation);
int RunUpper128(const Invocation& invocation);
int RunUrl(const Invocation& invocation);
int RunQuery(const Invocation& invocation);
int RunFormat(const Invocation& invocation);
int RunStrip(const Invocation& invocation);
int RunParse(const Invocation& invocation);
int RunDecode(const Invocation& invocation);

}  // namespace vesktext

#endif  // VESK_TOOLS_CLI_H
