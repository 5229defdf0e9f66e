// The default host where the C library cannot convert the code page, as
// with a libc that lacks its conversion modules: it says so once on
// standard error, and the module falls back as for any failed conversion.
// A program of its own, since its iconv_open replaces the C library's.
#include <iconv.h>

#include <cerrno>
#include <string>

#include "host/object_model.h"
#include "support.h"

extern "C" iconv_t iconv_open(const char* /*to*/, const char* /*from*/) {
  errno = EINVAL;
  return reinterpret_cast<iconv_t>(-1);
}

namespace {

// Rows: the current text, its version and the query appended for x = 'é'.
// Names and values keep their UTF-8 bytes; the current text's ASCII is
// still read for '=', '&' and '?'. The host says so once for them all.
TEST(ConverterMissingTest, SaysSoOnceAndConvertsNothing) {
  const struct {
    const char* text;
    int version;
    std::string expected;
  } kRows[] = {
      {"/a", 6, "/a?x=%C3%A9"},
      {"/a=b", 5, "/a=b&x=%C3%A9"},
  };
  vesk_test::ScopedCodePage page("windows-1252");
  testing::internal::CaptureStderr();
  EXPECT_EQ(CreateMBCSFromUTF8("\xC3\xA9", true), nullptr);
  for (const auto& row : kRows) {
    auto object = ScriptObject::Create();
    object->SetVariable("x", ScriptAtom::FromString("\xC3\xA9"), 0);
    CorePlayer player;
    player.convertToCodePage = true;
    VeskString s;
    s.AppendString(row.text);
    s.EncodeVariables(&player, object, row.version, false);
    EXPECT_EQ(vesk_test::Bytes(s), row.expected)
        << row.text << " " << row.version;
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "vesktext host: cannot convert from UTF-8 to CP1252 (Invalid "
            "argument); texts are left unconverted\n");
}

}  // namespace
