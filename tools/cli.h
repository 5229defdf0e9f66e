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

struct Option {
  const char* name;  // with its "--"
  bool takesValue;
};

// A command line after the command name, options taken apart.
struct Invocation {
  std::map<std::string, std::string> options;  // given ones; "" for flags
  std::vector<std::string> operands;
  bool help = false;

  bool Has(const char* name) const { return options.count(name) != 0; }
  // The value of an int option, or `fallback` when it was not given.
  int IntOption(const char* name, int fallback) const;
};

struct Command {
  const char* name;
  const char* synopsis;  // what follows "vesktext [--codepage NAME] "
  const char* summary;   // its line in the tool's help
  std::string details;   // the rest of its help
  std::vector<Option> options;
  int (*run)(const Invocation& invocation);  // returns the exit status
};

// Options may come anywhere before a "--"; "--name=value" and "--name value"
// both give a value. --help (-h) and --codepage are every command's.
Invocation Parse(const Command& command, const std::vector<std::string>& args);

// Sets the host code page; an unknown name is a usage error.
void SetCodePage(const std::string& name);

// Reads a whole decimal int, '-' allowed; false for anything else.
bool ParseInt(const std::string& text, int* value);

// Calls `each` with every operand in turn or, when there is none, with
// every line of standard input, its '\n' taken off and its other bytes as
// they are. A line holding a NUL byte is a run error: no text goes past one.
void ForEachText(const std::vector<std::string>& operands,
                 const std::function<void(const std::string&)>& each);

// Writes `n` bytes and a '\n' to standard output.
void PrintLine(const char* bytes, std::size_t n);
// The string's bytes up to Length(); a zeroed string prints an empty line.
void PrintLine(const VeskString& text);
// Prints a heap text from the module and releases it. Null prints an empty
// line for an empty `source`; otherwise the heap gave no block.
void PrintHeapText(char* text, const std::string& source);

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

}  // namespace vesktext

#endif  // VESK_TOOLS_CLI_H
