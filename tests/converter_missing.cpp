// The default host where the C library cannot convert the code page
// (windows-1252, the default), as with a libc that lacks its conversion
// modules. A program of its own, since its iconv_open replaces the C
// library's.
#include <iconv.h>

#include "host/vm_string.h"
#include "support.h"

extern "C" iconv_t iconv_open(const char* /*to*/, const char* /*from*/) {
  return reinterpret_cast<iconv_t>(-1);
}

// The host says so once on standard error. Conversions to the page fail
// (the module then encodes the UTF-8 bytes); 16-bit units keep the text's
// ASCII, where a query's '=' and '&' are, and other characters as U+FFFD.
TEST(ConverterMissingTest, SaysSoOnceAndConvertsNothing) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(CreateMBCSFromUTF8("\xC3\xA9", true), nullptr);
  const VeskString16 text(nullptr, "a=\xE9", 5);
  const StringRep16* wide = text.Rep();
  EXPECT_EQ(std::basic_string<unsigned short>(wide->String(), wide->Length()),
            (std::basic_string<unsigned short>{'a', '=', 0xFFFD}));
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "vesktext host: the C library cannot convert from UTF-8 to "
            "CP1252; texts are left unconverted\n");
}
