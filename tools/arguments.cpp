// Option reading shared by the commands: options, code pages, numbers.
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

const std::vector<CodePageNames>& CodePages() {
  static const std::vector<CodePageNames> kCodePages = {
      {"windows-1252", {"cp1252"}}, {"shift_jis", {"sjis", "cp932"}},
      {"gbk", {"cp936"}},           {"big5", {"cp950"}},
      {"euc-kr", {"cp949"}},        {"utf-8", {"utf8"}},
  };
  return kCodePages;
}

void SetCodePage(const std::string& name) {
  for (const CodePageNames& page : CodePages()) {
    bool named = VeskStrICmp(name.c_str(), page.host) == 0;
    for (const char* alias : page.aliases) {
      named = named || VeskStrICmp(name.c_str(), alias) == 0;
    }
    if (named && SetHostCodePage(page.host)) return;
  }
  throw UsageError("unknown code page '" + name +
                   "' (windows-1252, shift_jis, gbk, big5, euc-kr, utf-8; "
                   "see --help)");
}

int ContentVersion(const Invocation& invocation) {
  const int version =
      invocation.IntOption("--content-version", kDefaultContentVersion);
  if (version < 0) {
    throw UsageError(
        "option '--content-version' takes a version of 0 or "
        "more, not '" +
        invocation.options.at("--content-version") + "'");
  }
  return version;
}

bool ParseInt(const std::string& text, int* value) {
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, *value);
  return !text.empty() && result.ec == std::errc() && result.ptr == end;
}

}  // namespace vesktext
