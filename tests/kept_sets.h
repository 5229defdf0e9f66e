// The bytes that each escaping rule keeps as they are, as 256-entry tables,
// the output a rule gives for text of single-byte characters (each byte as
// it is when kept, else '%' and two upper-case hex digits), and the
// encoder or escaped copy that follows each rule.
#ifndef VESK_TESTS_KEPT_SETS_H
#define VESK_TESTS_KEPT_SETS_H

#include <array>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <string>

#include "core/veskstring.h"
#include "host/memory_manager.h"

namespace vesk_test {

enum Rule { kForm, kHighAscii, kStrict, kLenient, kUpper128, kUrl, kRules };
using Table = std::array<bool, 256>;

inline const Table& Kept(Rule rule) {
  static const std::array<Table, kRules> tables = [] {
    std::array<Table, kRules> t{};
    for (int b = 1; b < 256; ++b) {
      const bool alnum = b < 0x80 && std::isalnum(b);  // ASCII's 62
      t[kForm][b] = alnum;
      t[kHighAscii][b] = t[kUpper128][b] = b < 0x80;
      t[kStrict][b] = alnum || std::strchr("-.", b);
      t[kLenient][b] = true;
      t[kUrl][b] = alnum || std::strchr("!\"#$%&'()*+,-./:;=?@[]_~", b);
    }
    return t;
  }();
  return tables[rule];
}

// `plus`: the form encoding's space as '+'.
inline std::string Encoded(const std::string& text, Rule rule,
                           bool plus = false) {
  std::string out;
  for (char c : text) {
    char escape[4];
    std::snprintf(escape, sizeof escape, "%%%02X", c & 0xFF);
    const bool kept = Kept(rule)[c & 0xFF];
    out += plus && c == ' ' ? "+" : kept ? std::string(1, c) : escape;
  }
  return out;
}

// The escaped copy that `rule` (kStrict and after) makes of `s`: a heap
// text, or null.
inline char* EscapedCopy(Rule rule, const VeskString& s) {
  return rule == kStrict     ? s.CreateEscapedCStr(true)
         : rule == kLenient  ? s.CreateEscapedCStr(false)
         : rule == kUpper128 ? s.CreateUpper128ASCIIEscapedCStr()
                             : s.CreateEncodedUrl();
}

// What the encoder of `rule` makes of `text`: appended to an empty string
// (the form encoding with `plus` and `convert`), or as a heap text, which
// is released, "(null)" for none.
inline std::string Encode(Rule rule, const std::string& text, int version = 5,
                          bool plus = false, bool convert = false) {
  VeskString out;
  if (rule == kForm) out.EncodeString(text.c_str(), version, plus, convert);
  if (rule == kHighAscii) out.EncodeStringHighAscii(text.c_str(), version);
  if (rule <= kHighAscii) return out.Text() ? out.Text() : "";
  char* heap = EscapedCopy(rule, VeskString(text.c_str()));
  const std::string bytes = heap ? heap : "(null)";
  Pelgc::SystemDelete(heap);
  return bytes;
}

}  // namespace vesk_test

#endif  // VESK_TESTS_KEPT_SETS_H
