// Option reading shared by the commands.
#include <charconv>

#include "cli.h"
#include "core/veskstring.h"
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

int ContentVersion(const Invocation& invocation) {
  return invocation.IntOption("--content-version", kDefaultContentVersion);
}

bool ParseInt(const std::string& text, int* value) {
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, *value);
  return !text.empty() && result.ec == std::errc() && result.ptr == end;
}

}  // namespace vesktext
