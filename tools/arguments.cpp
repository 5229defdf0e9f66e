// Option reading shared by the commands: options, code pages, numbers.
#include <charconv>
#include <cstring>

#include "cli.h"
#include "core/veskstring.h"

namespace vesktext {

Invocation Parse(const Command& command, const std::vector<std::string>& args) {
  // The options are those of the synopsis: "[--name]" a flag, "[--name
  // VALUE]" one that takes a value.
  const std::string synopsis =
      std::string("[--codepage NAME] ") + command.synopsis;
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
    const bool takesValue =
        synopsis.find("[" + name + " ") != std::string::npos;
    if (!takesValue && synopsis.find("[" + name + "]") == std::string::npos) {
      throw UsageError("unknown option '" + name + "'");
    }
    std::string value;
    if (equals != std::string::npos) {
      if (!takesValue) throw UsageError("option '" + name + "' takes no value");
      value = arg.substr(equals + 1);
    } else if (takesValue) {
      if (++i == args.size()) {
        throw UsageError("option '" + name + "' needs a value");
      }
      value = args[i];
    }
    if (name == "--codepage") {
      SetCodePage(value);
    } else {
      invocation.options[name] = value;
    }
  }
  return invocation;
}

void SetCodePage(const std::string& name) {
  std::string known;
  for (int i = 0; const HostCodePageNames* page = HostCodePageAt(i); ++i) {
    bool named = VeskStrICmp(name.c_str(), page->name) == 0;
    for (const char* alias = page->aliases; *alias != '\0';) {
      const std::size_t length = std::strcspn(alias, " ");
      named = named || (name.size() == length &&
                        VeskStrNICmp(name.c_str(), alias, length) == 0);
      alias += length + (alias[length] == ' ');
    }
    if (named && SetHostCodePage(page->name)) return;
    known += (i == 0 ? "" : ", ") + std::string(page->name);
  }
  throw UsageError("unknown code page '" + name + "' (" + known +
                   "; see --help)");
}

int ContentVersion(const Invocation& invocation) {
  const auto given = invocation.options.find("--content-version");
  if (given == invocation.options.end()) return kDefaultContentVersion;
  const std::string& text = given->second;
  const char* end = text.data() + text.size();
  int version = -1;
  const auto result = std::from_chars(text.data(), end, version);
  if (result.ec != std::errc() || result.ptr != end || version < 0) {
    throw UsageError(
        "option '--content-version' takes a version of 0 or more, not '" +
        text + "'");
  }
  return version;
}

}  // namespace vesktext
