// The typical road of a caller: hold a URL in a VeskString, append to it
// (formatted appends included), slice it, compare it, take a typed link
// apart, and release everything.
#include <cstdio>

#include "core/veskstring.h"
#include "host/memory_manager.h"
#include "host/object_model.h"

namespace {

void Show(const char* label, const VeskString& s) {
  std::printf("%-22s \"%s\" (length %d, capacity %d)\n", label,
              s.Text() != nullptr ? s.Text() : "(no text)", s.Length(),
              s.Capacity());
}

}  // namespace

int main() {
  const unsigned long liveAtStart = Pelgc::GetHeapStats().live;
  {
    VeskString url("http://example.com/my player");
    Show("built", url);

    url.AppendChar('?');
    url.AppendString("movie=intro");
    url.AppendChar('&');
    url.AppendString("quality=high&debug", 12);  // at most 12 bytes
    Show("appended", url);

    url.AppendFormat("&lang=%s&retry=%d", "en", 3);  // a text and an int
    Show("formatted", url);

    // A script object's variables, form-encoded after the '&' they need.
    CorePlayer player;
    auto form = ScriptObject::Create();
    form->SetVariable("user", ScriptAtom::FromString("Ann Lee"));
    form->SetVariable("score", ScriptAtom::FromNumber(97.5));
    form->SetVariable("$internal", ScriptAtom::FromBool(true));  // left out
    url.EncodeVariables(&player, form, 6, false);
    Show("with variables", url);
    std::printf("%-22s $internal: names beginning with '$' are not sent\n",
                "left out");

    // An escaped heap copy for the network layer, released by its receiver.
    char* request = url.CreateEncodedUrl();
    if (request != nullptr) {
      std::printf("%-22s \"%s\"\n", "escaped copy", request);
      Pelgc::SystemDelete(request);
    }

    VeskString host = url.SubString(7, 17);  // both ends included
    Show("host slice", host);

    VeskString expected("example.com");
    std::printf("host is example.com:  %s\n", host == expected ? "yes" : "no");
    host.ToUpper();
    Show("upper-cased host", host);
    std::printf("upper orders first:   %s\n", host < expected ? "yes" : "no");

    VeskString path = url.SubString(18, -1);  // -1: up to the last byte
    Show("path and query", path);

    // A link as a user typed it: step over blanks, scheme and slashes, then
    // read the port after the host.
    const char* typed = "  HTTP://example.com:8080/intro";
    const char* rest = StripAtMostTwoSlashes(StripScheme(typed, "http:"));
    const char* colon = rest != nullptr ? VeskStrChr(rest, ':') : nullptr;
    if (colon != nullptr) {
      const auto hostLength = static_cast<unsigned long>(colon - rest);
      char* hostName = CreateStr(rest, hostLength);
      std::printf("typed link:            host \"%s\", port %d\n",
                  hostName != nullptr ? hostName : "", ToInt(colon + 1));
      if (hostName != nullptr) Pelgc::SystemDelete(hostName);
    }
  }
  const unsigned long leaked = Pelgc::GetHeapStats().live - liveAtStart;
  std::printf("heap blocks still live: %lu\n", leaked);
  return leaked == 0 ? 0 : 1;
}
