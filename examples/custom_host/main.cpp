// The module on a host of its own: the typical road of a caller, with every
// block from this host's arena (host/host.cpp) and none from the default
// host, which is not linked.
#include <cstdio>

#include "core/veskstring.h"
#include "host/memory_manager.h"
#include "host/object_model.h"
#include "host/vm_string.h"

int main() {
  {
    // The address as the script VM holds it.
    marlo::String address("https://scores.example.com/post");
    VeskString url(&address);
    url.AppendFormat("?game=%s&level=%d", "tetra", 7);
    std::printf("formatted:      %s\n", url.Text());

    CorePlayer player;
    player.convertToCodePage = true;  // names and values to ISO-8859-1
    auto form = ScriptObject::Create();
    form->SetVariable("player", ScriptAtom::FromString("Zoë Łódź"));
    form->SetVariable("score", ScriptAtom::FromNumber(1200));
    form->SetVariable("$session", ScriptAtom::FromString("9f"));
    url.EncodeVariables(&player, form, 6, false);
    std::printf("with variables: %s\n", url.Text());
    std::printf(
        "$session is left out: names beginning with '$' are not sent\n");
    std::printf("Ł and ź became '?' (%%3F): ISO-8859-1 has no such letters\n");

    // The escaped copy for the network layer is the caller's to release.
    char* request = url.CreateEncodedUrl();
    if (request == nullptr) return 1;
    std::printf("request:        %s\n", request);
    Pelgc::SystemDelete(request);
  }
  const unsigned long live = Pelgc::ArenaLiveBlocks();
  std::printf("arena blocks live: %lu\n", live);
  return live == 0 ? 0 : 1;
}
