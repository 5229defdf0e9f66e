// Option reading, text sources and output shared by the commands.
#include <charconv>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <new>

#include "cli.h"
#include "core/veskstring.h"
#include "host/memory_manager.h"
#include "host/text_services.h"

namespace vesktext {

namespace {

const Option* FindOption(const Command& command, const std::string& name) {
  for (const Option& option : command.options) {
    if (name == option.name) return &option;
  }
  return nullptr;
}

}  // namespace

int Invocation::IntOption(const char* name, int fallback) const {
  const auto found = options.find(name);
  if (found == options.end()) return fallback;
  int value = 0;
  if (!ParseInt(found->second, &value)) {
    throw UsageError(std::string("option '") + name + "' takes an int, not '" +
                     found->second + "'");
  }
  return value;
}

Invocation Parse(const Command& command, const std::vector<std::string>& args) {
  static const Option kCodePage{"--codepage", true};
  Invocation invocation;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    if (arg == "--") {
      invocation.operands.insert(invocation.operands.end(),
                                 args.begin() + i + 1, args.end());
      break;
    }
    if (arg == "--help" || arg == "-h") {
      invocation.help = true;
      continue;
    }
    if (arg.compare(0, 2, "--") != 0) {
      invocation.operands.push_back(arg);
      continue;
    }
    const std::size_t equals = arg.find('=');
    const std::string name = arg.substr(0, equals);
    const Option* option =
        name == kCodePage.name ? &kCodePage : FindOption(command, name);
    if (option == nullptr) throw UsageError("unknown option '" + name + "'");
    std::string value;
    if (equals != std::string::npos) {
      if (!option->takesValue) {
        throw UsageError("option '" + name + "' takes no value");
      }
      value = arg.substr(equals + 1);
    } else if (option->takesValue) {
      if (++i == args.size()) {
        throw UsageError("option '" + name + "' needs a value");
      }
      value = args[i];
    }
    if (option == &kCodePage) {
      SetCodePage(value);
    } else {
      invocation.options[name] = value;
    }
  }
  return invocation;
}

void SetCodePage(const std::string& name) {
  if (!SetHostCodePage(name.c_str())) {
    throw UsageError("unknown code page '" + name +
                     "' (windows-1252, shift_jis, gbk, big5, euc-kr, utf-8)");
  }
}

bool ParseInt(const std::string& text, int* value) {
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, *value);
  return !text.empty() && result.ec == std::errc() && result.ptr == end;
}

void ForEachText(const std::vector<std::string>& operands,
                 const std::function<void(const std::string&)>& each) {
  if (!operands.empty()) {
    for (const std::string& text : operands) each(text);
    return;
  }
  std::string line;
  for (unsigned long number = 1; std::getline(std::cin, line); ++number) {
    if (line.find('\0') != std::string::npos) {
      throw RunError("line " + std::to_string(number) +
                     " of standard input holds a NUL byte");
    }
    each(line);
  }
  if (std::cin.bad()) throw RunError("cannot read standard input");
}

void PrintLine(const char* bytes, std::size_t n) {
  if (n != 0) std::fwrite(bytes, 1, n, stdout);
  std::fputc('\n', stdout);
}

void PrintLine(const VeskString& text) {
  PrintLine(text.Text(), static_cast<std::size_t>(text.Length()));
}

void PrintHeapText(char* text, const std::string& source) {
  if (text == nullptr) {
    if (!source.empty()) throw std::bad_alloc();
    PrintLine("", 0);
    return;
  }
  PrintLine(text, std::strlen(text));
  Pelgc::SystemDelete(text);
}

}  // namespace vesktext
