// The default host's code page: a process-wide choice among a few Windows
// code pages and UTF-8, converted with the C library's iconv.
#include <iconv.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <unordered_map>
#include <vector>

#include "memory_manager.h"
#include "text_services.h"
#include "utf.h"

namespace {

// The 16-bit units are produced in the machine's own byte order.
constexpr const char* kUtf16Units =
    __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ ? "UTF-16LE" : "UTF-16BE";

struct CodePage {
  HostCodePageNames names;  // the host's and a user's
  const char* iconvName;    // the C library's name for it
  bool utf8;
  // The byte count of the character that each byte value begins. The
  // encoders ask for it byte after byte, so it is one load, not a test of
  // ranges.
  unsigned char width[256];
};

// A page whose two-byte characters begin with a byte in [first1, last1] or
// [first2, last2] (an empty range when first > last).
constexpr CodePage DoubleBytePage(HostCodePageNames names,
                                  const char* iconvName, int first1, int last1,
                                  int first2, int last2) {
  CodePage page{names, iconvName, false, {}};
  for (int lead = 0; lead < 256; ++lead) {
    const bool leads =
        (lead >= first1 && lead <= last1) || (lead >= first2 && lead <= last2);
    page.width[lead] = leads ? 2 : 1;
  }
  return page;
}

constexpr CodePage Utf8Page() {
  CodePage page{{"utf-8", "utf8"}, "UTF-8", true, {}};
  for (int lead = 0; lead < 256; ++lead) {
    page.width[lead] = static_cast<unsigned char>(
        vesk_host::Utf8LeadWidth(static_cast<unsigned char>(lead)));
  }
  return page;
}

constexpr CodePage kCodePages[] = {
    DoubleBytePage({"windows-1252", "cp1252"}, "CP1252", 1, 0, 1, 0),
    DoubleBytePage({"shift_jis", "sjis cp932"}, "CP932", 0x81, 0x9F, 0xE0,
                   0xFC),
    DoubleBytePage({"gbk", "cp936"}, "CP936", 0x81, 0xFE, 1, 0),
    DoubleBytePage({"big5", "cp950"}, "CP950", 0x81, 0xFE, 1, 0),
    DoubleBytePage({"euc-kr", "cp949"}, "CP949", 0x81, 0xFE, 1, 0),
    Utf8Page(),
};

std::atomic<const CodePage*> g_codePage{&kCodePages[0]};
std::atomic<void (*)(unsigned char)> g_widthObserver{nullptr};
std::atomic<bool> g_openFailureReported{false};

// A C library without the page's conversion module (a cross libc without
// its gconv files, a trimmed container) makes every conversion fail. That
// is said once per process on standard error, so that unconverted texts
// are not a mystery.
iconv_t OpenConverter(const char* to, const char* from) {
  const iconv_t cd = iconv_open(to, from);
  if (cd == reinterpret_cast<iconv_t>(-1) &&
      !g_openFailureReported.exchange(true)) {
    std::fprintf(stderr,
                 "vesktext host: the C library cannot convert from %s to %s; "
                 "texts are left unconverted\n",
                 from, to);
  }
  return cd;
}

// What a code page makes of one character: kUnknown till the converter
// has been asked, kLacking, or its bytes: one byte b as kSingle | b, two
// as lead << 8 | trail (every lead byte is 0x81 or above, and no page here
// takes more than two bytes for a character).
using PageChar = unsigned short;
constexpr PageChar kUnknown = 0;
constexpr PageChar kLacking = 1;
constexpr PageChar kSingle = 0x100;

// One pair of converters per thread for the current code page, opened on
// first use: opening one costs far more than a short conversion. With
// them, what the page makes of each character met so far: a converter
// stopped by a character the page lacks restarts slowly, at the cost of
// converting thousands of characters, so each character is put to it
// once, alone, and then looked up.
class Converters {
 public:
  ~Converters() { Close(); }
  // Each is kNone when the C library cannot convert the page.
  iconv_t ToPage(const CodePage* page) { return Get(page).first; }
  iconv_t FromPage(const CodePage* page) { return Get(page).second; }

  static inline const iconv_t kNone = reinterpret_cast<iconv_t>(-1);

  // The entry of `code` for the page last asked for.
  PageChar& Known(char32_t code) {
    if (code >= 0x10000) return m_beyondBmp[code];
    if (m_bmp.empty()) m_bmp.assign(0x10000, kUnknown);
    return m_bmp[code];
  }

 private:
  std::pair<iconv_t, iconv_t> Get(const CodePage* page) {
    if (page != m_page) {
      Close();
      m_toPage = OpenConverter(page->iconvName, "UTF-8");
      m_fromPage = OpenConverter(kUtf16Units, page->iconvName);
      m_page = page;
    }
    iconv(m_toPage, nullptr, nullptr, nullptr, nullptr);  // reset shift state
    iconv(m_fromPage, nullptr, nullptr, nullptr, nullptr);
    return {m_toPage, m_fromPage};
  }
  void Close() {
    if (m_toPage != kNone) iconv_close(m_toPage);
    if (m_fromPage != kNone) iconv_close(m_fromPage);
    m_toPage = m_fromPage = kNone;
    m_page = nullptr;
    m_bmp.clear();
    m_beyondBmp.clear();
  }

  const CodePage* m_page = nullptr;
  iconv_t m_toPage = kNone;
  iconv_t m_fromPage = kNone;
  std::vector<PageChar> m_bmp;  // by code point below U+10000
  std::unordered_map<char32_t, PageChar> m_beyondBmp;
};

thread_local Converters t_converters;

// Asks the converter what the page makes of the one character at `utf8`;
// kUnknown when the converter fails otherwise than for want of the
// character (one that could not be opened).
PageChar AskConverter(iconv_t cd, const char* utf8, std::size_t width) {
  char* in = const_cast<char*>(utf8);
  char bytes[2];
  char* out = bytes;
  std::size_t inLeft = width;
  std::size_t outLeft = sizeof bytes;
  if (iconv(cd, &in, &inLeft, &out, &outLeft) == static_cast<size_t>(-1)) {
    return errno == EILSEQ ? kLacking : kUnknown;
  }
  const auto lead = static_cast<unsigned char>(bytes[0]);
  const auto trail = static_cast<unsigned char>(bytes[1]);
  return static_cast<PageChar>(out - bytes == 1 ? kSingle | lead
                                                : lead << 8 | trail);
}

// Converts valid UTF-8 with `cd` into `out`, which has room for `length`
// bytes (no supported page needs more bytes for a character than UTF-8
// does). Characters the page cannot hold become '?'. Returns the bytes
// written.
std::size_t ConvertToPage(iconv_t cd, const char* utf8, std::size_t length,
                          char* out) {
  const auto* p = reinterpret_cast<const unsigned char*>(utf8);
  const unsigned char* const end = p + length;
  char* const start = out;
  while (p < end) {
    char32_t code;
    const std::size_t width = vesk_host::DecodeUtf8(p, end, &code);
    PageChar& known = t_converters.Known(code);
    if (known == kUnknown) {
      known = AskConverter(cd, reinterpret_cast<const char*>(p), width);
      if (known == kUnknown) break;
    }
    if (known == kLacking) {
      *out++ = '?';
    } else if (known < 2 * kSingle) {
      *out++ = static_cast<char>(known & 0xFF);
    } else {
      *out++ = static_cast<char>(known >> 8);
      *out++ = static_cast<char>(known & 0xFF);
    }
    p += width;
  }
  return static_cast<std::size_t>(out - start);
}

// The units of a text whose page the C library cannot convert: ASCII, which
// every supported page shares, as itself (so the '=' and '&' that a query is
// found by stay visible), and every other character as U+FFFD.
std::basic_string<unsigned short> AsciiOnlyUtf16(const CodePage* page,
                                                 const char* text,
                                                 std::size_t length) {
  std::basic_string<unsigned short> units;
  for (std::size_t i = 0; i < length;) {
    const auto byte = static_cast<unsigned char>(text[i]);
    units += static_cast<unsigned short>(byte < 0x80 ? byte
                                                     : vesk_host::kReplacement);
    i += page->width[byte];
  }
  return units;
}

}  // namespace

bool SetHostCodePage(const char* name) {
  if (name == nullptr) return false;
  for (const CodePage& page : kCodePages) {
    if (std::strcmp(page.names.name, name) == 0) {
      g_codePage.store(&page);
      return true;
    }
  }
  return false;
}

const char* HostCodePage() { return g_codePage.load()->names.name; }

const HostCodePageNames* HostCodePageAt(int index) {
  const int count = sizeof kCodePages / sizeof kCodePages[0];
  return index >= 0 && index < count ? &kCodePages[index].names : nullptr;
}

char* CreateMBCSFromUTF8(const char* utf8, bool /*terminate*/) {
  if (utf8 == nullptr) return nullptr;
  const std::size_t length = std::strlen(utf8);
  if (!vesk_host::IsValidUtf8(utf8, length)) return nullptr;
  const CodePage* page = g_codePage.load();
  const iconv_t cd = page->utf8 ? Converters::kNone : t_converters.ToPage(page);
  if (!page->utf8 && cd == Converters::kNone) return nullptr;
  auto* text =
      static_cast<char*>(Pelgc::SystemNew(length + 1, Pelgc::kMayReturnNull));
  if (text == nullptr) return nullptr;
  std::size_t written = length;
  if (page->utf8) {
    std::memcpy(text, utf8, length);
  } else {
    written = ConvertToPage(cd, utf8, length, text);
  }
  text[written] = '\0';
  return text;
}

int PlayerBytesInChar(unsigned char lead) {
  auto* const observer = g_widthObserver.load(std::memory_order_relaxed);
  if (observer != nullptr) observer(lead);
  return g_codePage.load()->width[lead];
}

void ObservePlayerBytesInChar(void (*observer)(unsigned char lead)) {
  g_widthObserver.store(observer);
}

namespace vesk_host {

std::basic_string<unsigned short> CodePageToUtf16(const char* text,
                                                  std::size_t length) {
  const CodePage* page = g_codePage.load();
  if (page->utf8) return Utf8ToUtf16(text, length);
  // Every supported page takes at least one byte per 16-bit unit.
  std::basic_string<unsigned short> units(length, 0);
  iconv_t cd = t_converters.FromPage(page);
  if (cd == Converters::kNone) return AsciiOnlyUtf16(page, text, length);
  char* in = const_cast<char*>(text);
  std::size_t inLeft = length;
  char* out = reinterpret_cast<char*>(&units[0]);
  std::size_t outLeft = length * 2;
  while (inLeft > 0 &&
         iconv(cd, &in, &inLeft, &out, &outLeft) == static_cast<size_t>(-1) &&
         (errno == EILSEQ || errno == EINVAL)) {
    // An ill-formed byte, or a character cut short at the end.
    const std::size_t skip = errno == EINVAL ? inLeft : 1;
    const unsigned short replacement = kReplacement;
    std::memcpy(out, &replacement, 2);
    out += 2;
    outLeft -= 2;
    in += skip;
    inLeft -= skip;
  }
  units.resize(length - outLeft / 2);
  return units;
}

}  // namespace vesk_host
