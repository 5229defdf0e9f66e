// The commands over text: encodings, escaped copies, queries, stripping and
// number reading, each a thin layer over one module operation.
#include <cstdio>
#include <string>

#include "cli.h"
#include "core/veskstring.h"
#include "host/object_model.h"

namespace vesktext {

namespace {

// Content of version 6 and above is UTF-8: the default for text typed today.
constexpr int kDefaultContentVersion = 6;

int ContentVersion(const Invocation& invocation) {
  return invocation.IntOption("--content-version", kDefaultContentVersion);
}

// Prints, for each text, the heap text `create` makes of it.
int PrintEscapedCopies(const Invocation& invocation,
                       char* (*create)(const VeskString& text)) {
  ForEachText(invocation.operands, [create](const std::string& text) {
    const VeskString source(text.c_str());
    PrintHeapText(create(source), text);
  });
  return 0;
}

}  // namespace

int RunForm(const Invocation& invocation) {
  const int version = ContentVersion(invocation);
  const bool plusForSpace = !invocation.Has("--percent-space");
  const bool convert = invocation.Has("--convert");
  ForEachText(invocation.operands, [&](const std::string& text) {
    VeskString encoded;
    encoded.EncodeString(text.c_str(), version, plusForSpace, convert);
    PrintLine(encoded);
  });
  return 0;
}

int RunHigh(const Invocation& invocation) {
  const int version = ContentVersion(invocation);
  ForEachText(invocation.operands, [version](const std::string& text) {
    VeskString encoded;
    encoded.EncodeStringHighAscii(text.c_str(), version);
    PrintLine(encoded);
  });
  return 0;
}

int RunEscape(const Invocation& invocation) {
  if (invocation.Has("--strict")) {
    return PrintEscapedCopies(invocation, [](const VeskString& text) {
      return text.CreateEscapedCStr(true);
    });
  }
  return PrintEscapedCopies(invocation, [](const VeskString& text) {
    return text.CreateEscapedCStr(false);
  });
}

int RunUpper128(const Invocation& invocation) {
  return PrintEscapedCopies(invocation, [](const VeskString& text) {
    return text.CreateUpper128ASCIIEscapedCStr();
  });
}

int RunUrl(const Invocation& invocation) {
  return PrintEscapedCopies(invocation, [](const VeskString& text) {
    return text.CreateEncodedUrl();
  });
}

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
  int status = 0;
  ForEachText(invocation.operands, [&](const std::string& text) {
    const char* rest = StripWhitespace(text.c_str());
    if (scheme != invocation.options.end()) {
      rest = StripAtMostTwoSlashes(StripScheme(rest, scheme->second.c_str()));
    }
    if (rest == nullptr) {
      std::fprintf(stderr, "vesktext: strip: '%s' does not start with '%s'\n",
                   text.c_str(), scheme->second.c_str());
      status = 1;
      return;
    }
    PrintLine(rest,
              text.size() - static_cast<std::size_t>(rest - text.c_str()));
  });
  return status;
}

int RunParse(const Invocation& invocation) {
  const bool isUnsigned = invocation.Has("--unsigned");
  ForEachText(invocation.operands, [isUnsigned](const std::string& text) {
    const char* c_text = text.c_str();
    const std::string number = isUnsigned ? std::to_string(ToUInt64(c_text))
                                          : std::to_string(ToInt64(c_text));
    PrintLine(number.data(), number.size());
  });
  return 0;
}

}  // namespace vesktext
