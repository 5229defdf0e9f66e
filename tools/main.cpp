// vesktext: the text module's operations from a shell. Each command runs one
// operation over texts from its arguments or from standard input.
//
// Exit status: 0 done, 1 a failure while running, 2 a usage error.
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "cli.h"
#include "host/memory_manager.h"

namespace vesktext {
namespace {

constexpr const char kTextNote[] =
    "Each TEXT gives one line of output. With no TEXT, each line of\n"
    "standard input does, its bytes as they are (a '\\r' before the\n"
    "newline included), whatever its length. A NUL byte would end the\n"
    "text there, so a line holding one is refused: the tool stops with\n"
    "an error naming the line and the byte's offset in it. What was\n"
    "written of a line refused partway (a NUL byte, decode --strict)\n"
    "stays on standard output, as in any stream.\n";

const std::string kConvertNote =
    "A line that is not all UTF-8 goes unconverted. That is known only\n"
    "at its end, so the output of a long line holding more than ASCII\n"
    "may come only once all of it is read (kept on disk till then).\n";

const std::string kVersionOption =
    "  --content-version N  the content's version (default " +
    std::to_string(kDefaultContentVersion) + "); content\n" +
    "                       of version " + std::to_string(kFirstUtf8Version) +
    " and above is UTF-8\n";

const std::vector<Command>& Commands() {
  static const std::vector<Command> kCommands = {
      {"form",
       "form [--percent-space] [--content-version N]\n"
       "                [--convert] [TEXT...]",
       "form-encode: letters and digits kept, a space as '+'",
       "Form-encodes each TEXT: ASCII letters and digits stay, a space\n"
       "becomes '+', every other byte %XX.\n"
       "  --percent-space      a space becomes %20\n" +
           kVersionOption +
           "  --convert            UTF-8 content goes to the code page\n" +
           kConvertNote,
       RunForm},
      {"high", "high [--content-version N] [TEXT...]",
       "escape only the bytes 0x80 to 0xFF",
       "Escapes the bytes 0x80 to 0xFF of each TEXT as %XX and keeps the\n"
       "others. UTF-8 content goes to the code page first.\n" +
           kVersionOption + kConvertNote,
       RunHigh},
      {"escape", "escape [--strict] [TEXT...]",
       "escaped copy: multibyte characters as %XX",
       "Prints an escaped copy of each TEXT: every byte of a multibyte\n"
       "character of the code page as %XX, single bytes as they are.\n"
       "  --strict  single bytes as %XX too, but for ASCII letters,\n"
       "            digits, '-' and '.'\n",
       RunEscape},
      {"upper128", "upper128 [TEXT...]",
       "escaped copy keeping the bytes 0x01 to 0x7F",
       "Prints an escaped copy of each TEXT: the bytes 0x01 to 0x7F as\n"
       "they are, the others and multibyte characters of the code page\n"
       "as %XX.\n",
       RunUpper128},
      {"url", "url [TEXT...]", "escaped copy keeping what a URL holds",
       "Prints an escaped copy of each TEXT: ASCII letters, digits and\n"
       "!\"#$%&'()*+,-./:;=?@[]_~ as they are, the others and multibyte\n"
       "characters of the code page as %XX.\n",
       RunUrl},
      {"decode", "decode [--plus] [--strict] [TEXT...]",
       "the way back: percent escapes to their bytes",
       "Writes each TEXT with every escape, '%' and two hex digits of\n"
       "either case, as its byte; NUL and bytes from 0x80 up are written\n"
       "as they are. A '%' that begins no escape stays. decode --plus\n"
       "undoes form, decode undoes escape and url (but url keeps a '%',\n"
       "so an escape already in its TEXT is decoded too).\n"
       "  --plus    a '+' becomes a space, as in form bodies\n"
       "  --strict  a '%' that begins no escape is an error naming its\n"
       "            line and column\n",
       RunDecode},
      {"query",
       "query [--no-question-mark]\n"
       "                [--content-version N] [--convert] BASE [NAME=VALUE...]",
       "append NAME=VALUE pairs to BASE as a query",
       "Appends the pairs to BASE, form-encoded, in order: '?' before the\n"
       "first ('&' when BASE holds '=', '&' or '?'), '&' between. A NAME\n"
       "given again keeps its place and takes the new VALUE; a NAME that\n"
       "starts with '$' is left out.\n"
       "  --no-question-mark   nothing instead of '?'\n" +
           kVersionOption +
           "  --convert            names and values go to the code page\n",
       RunQuery},
      {"format", "format FORMAT [ARG...]",
       "carry out the directives of FORMAT over typed ARGs",
       "Prints FORMAT with its directives carried out. A directive that\n"
       "reads a value takes the next ARG: its letter, ':' and the value.\n" +
           DirectiveHelp() +
           "INT is a decimal int; NUMBER a decimal double, \"inf\" or "
           "\"nan\";\n"
           "HEX hex digits after an optional \"0x\". A 3:TEXT has three bytes\n"
           "or more. Any other character after '%' is dropped with it, as is\n"
           "a '%' at the end. A directive without its ARG, an ARG of another\n"
           "kind and an ARG left over are usage errors.\n",
       RunFormat},
      {"strip", "strip [--scheme SCHEME] [TEXT...]",
       "step over leading whitespace, and a scheme",
       "Prints each TEXT after its leading whitespace; with --scheme, also\n"
       "after SCHEME (letters in either case) and one or two '/'. A TEXT\n"
       "without the scheme prints nothing and makes the exit status 1.\n",
       RunStrip},
      {"parse", "parse [--unsigned] [TEXT...]",
       "read the decimal integer at the start of TEXT",
       "Prints the integer at the start of each TEXT: an optional '-',\n"
       "then digits up to the first other byte. No digits read 0; too\n"
       "many wrap around in 64 bits.\n"
       "  --unsigned  read without a sign: a leading '-' reads 0\n",
       RunParse},
  };
  return kCommands;
}

void PrintUsage(std::FILE* out, const Command* command) {
  if (command != nullptr) {
    std::fprintf(out, "usage: vesktext [--codepage NAME] %s\n",
                 command->synopsis);
    return;
  }
  std::fputs(
      "usage: vesktext [--codepage NAME] COMMAND [OPTION...] [TEXT...]\n"
      "       vesktext --help | --version | COMMAND --help\n",
      out);
}

void PrintHelp(const Command* command) {
  PrintUsage(stdout, command);
  std::fputc('\n', stdout);
  if (command != nullptr) {
    std::fputs(command->details.c_str(), stdout);
    if (std::string(command->synopsis).find("TEXT...") != std::string::npos) {
      std::fputc('\n', stdout);
      std::fputs(kTextNote, stdout);
    }
    return;
  }
  std::fputs("Runs one operation of the text module over texts.\n\ncommands:\n",
             stdout);
  for (const Command& each : Commands()) {
    std::printf("  %-9s %s\n", each.name, each.summary);
  }
  std::fputs(
      "\noptions:\n"
      "  --codepage NAME  the host code page, named in any case by any of\n"
      "                   the names on its line below\n"
      "  --help, -h       this help, or after COMMAND that command's\n"
      "  --version        the tool's version\n\n"
      "code pages:\n",
      stdout);
  for (int i = 0; const HostCodePageNames* page = HostCodePageAt(i); ++i) {
    std::printf("  %-12s %s%s\n", page->name, page->aliases,
                i == 0 ? "  (the default)" : "");
  }
  std::fputc('\n', stdout);
  std::fputs(kTextNote, stdout);
  std::fputs(
      "Exit status: 0 done, 1 a failure while running, 2 a usage\n"
      "error.\n",
      stdout);
}

const Command* FindCommand(const std::string& name) {
  for (const Command& command : Commands()) {
    if (name == command.name) return &command;
  }
  return nullptr;
}

// Runs the command line; usage errors name the command they belong to.
int Run(const std::vector<std::string>& args, const Command** command) {
  std::size_t i = 0;
  for (; i < args.size() && args[i].compare(0, 1, "-") == 0; ++i) {
    const std::string& arg = args[i];
    if (arg == "--help" || arg == "-h") {
      PrintHelp(nullptr);
      return 0;
    }
    if (arg == "--version") {
      std::puts("vesktext " VESKTEXT_VERSION);
      return 0;
    }
    if (arg == "--codepage") {
      if (++i == args.size()) {
        throw UsageError("option '--codepage' needs a value");
      }
      SetCodePage(args[i]);
    } else if (arg.compare(0, 11, "--codepage=") == 0) {
      SetCodePage(arg.substr(11));
    } else {
      throw UsageError("unknown option '" + arg + "'");
    }
  }
  if (i == args.size()) throw UsageError("no command given");
  *command = FindCommand(args[i]);
  if (*command == nullptr) {
    throw UsageError("unknown command '" + args[i] + "'");
  }
  const Invocation invocation = Parse(
      **command, std::vector<std::string>(args.begin() + i + 1, args.end()));
  if (invocation.help) {
    PrintHelp(*command);
    return 0;
  }
  return (*command)->run(invocation);
}

// Every block the tool took from the host heap must be back by now.
int CheckHeap(int status) {
  const unsigned long live = Pelgc::GetHeapStats().live;
  if (live == 0) return status;
  std::fprintf(stderr, "vesktext: %lu heap block(s) not released\n", live);
  return 1;
}

}  // namespace
}  // namespace vesktext

int main(int argc, char** argv) {
  using namespace vesktext;
  Pelgc::KeepLargeBlocksInHeap();
  const std::vector<std::string> args(argv + 1, argv + argc);
  const Command* command = nullptr;
  int status = 1;
  try {
    status = Run(args, &command);
  } catch (const UsageError& error) {
    std::fprintf(stderr, "vesktext: %s%s%s\n",
                 command != nullptr ? command->name : "",
                 command != nullptr ? ": " : "", error.what());
    PrintUsage(stderr, command);
    return 2;
  } catch (const std::exception& error) {
    const char* heap = HeapFailure();  // the host's words are not a user's
    std::fflush(stdout);  // the output before the failure comes first
    std::fprintf(stderr, "vesktext: %s\n", heap ? heap : error.what());
  }
  if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
    std::fputs("vesktext: cannot write standard output\n", stderr);
    status = 1;
  }
  return CheckHeap(status);
}
