// Uses the installed headers and library the way a caller does: a string,
// an encoding, and an escaped heap copy released with Pelgc::SystemDelete.
#include <cstdio>

#include "core/veskstring.h"
#include "host/memory_manager.h"

int main() {
  {
    VeskString form;
    form.EncodeString("Ann Lee & co", 6, true, false);
    const VeskString url("http://example.com/a b");
    char* escaped = url.CreateEncodedUrl();
    if (escaped == nullptr) return 1;
    std::printf("%s %s\n", form.Text(), escaped);
    Pelgc::SystemDelete(escaped);
  }
  return Pelgc::GetHeapStats().live == 0 ? 0 : 1;
}
