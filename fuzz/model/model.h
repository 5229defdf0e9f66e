// A reference model of the text module for the fuzz targets to compare it
// with: each rule written out plainly, step by step, sharing no code with
// the module. A string is a byte vector with an explicit capacity, searches
// and readers are plain loops, and heap requests are recorded, not made.
#ifndef VESK_FUZZ_MODEL_MODEL_H
#define VESK_FUZZ_MODEL_MODEL_H

#include <climits>
#include <cmath>
#include <functional>
#include <limits>
#include <new>
#include <string>
#include <vector>

namespace model {

struct Request {
  unsigned long size;
  int opts;
  bool operator==(const Request& o) const {
    return size == o.size && opts == o.opts;
  }
};

struct TooLarge {};  // the too-large report
struct Aborted {};   // the heap abort

// The heap: every request is logged, and a plan fails requests as the
// default host's fault injection does (a null for option 0 throws).
struct Heap {
  std::vector<Request> log;
  bool armed = false;
  unsigned long skip = 0;
  bool throws = false;
  bool persistent = false;

  // True when the request yields a block.
  bool Take(unsigned long size, int opts) {
    log.push_back({size, opts});
    if (!armed) return true;
    if (skip > 0) {
      --skip;
      return true;
    }
    if (!persistent) armed = false;
    if (throws || opts == 0) throw std::bad_alloc();
    return false;
  }
  // The size guard in front of every request but U64ToChar's.
  bool Guarded(unsigned long count, int opts) {
    if (count >= 4294967295UL) throw TooLarge();
    if (count == 0) return false;
    return Take(count, opts);
  }
};
inline Heap& TheHeap() { static Heap heap; return heap; }

// What a host service gave: its text, or null, and the requests it made.
struct HostText {
  bool null = true;
  std::string text;
  std::vector<Request> requests;
};
// The host services, bound by the fuzz targets to the real ones.
struct Host {
  std::function<HostText(double)> doubleText;
  std::function<HostText(const char*)> codePage;
  std::function<int(unsigned char)> bytesInChar;
};
inline Host& TheHost() { static Host host; return host; }

// Replays a host call's requests on the model heap: a failing one makes
// the host give null.
inline bool Replay(const HostText& given, std::string* text) {
  for (const Request& r : given.requests) {
    if (!TheHeap().Take(r.size, r.opts)) return false;
  }
  if (given.null) return false;
  *text = given.text;
  return true;
}

inline unsigned long Length(const char* text) {
  unsigned long n = 0;
  while (text[n] != '\0') ++n;
  return n;
}
inline bool IsAlnum(unsigned char b) {
  return (b >= '0' && b <= '9') || (b >= 'A' && b <= 'Z') ||
         (b >= 'a' && b <= 'z');
}
inline char HexDigit(int value) {
  const int d = value & 15;
  return static_cast<char>(d < 10 ? '0' + d : 'A' + d - 10);
}

// A heap text handed to the caller: null, or its bytes.
struct HeapText {
  bool null = true;
  std::string text;
};

struct FormatArg {
  enum Kind { kInt, kDouble, kText, kPointer } kind;
  long integer = 0;  // kInt (an int's value) and kPointer
  double real = 0;
  const char* text = nullptr;
};

enum class Escape { kStrict, kLenient, kUpper128, kUrl };

inline HeapText CreateStr(const char* text) {
  if (text == nullptr) return {};
  if (!TheHeap().Guarded(Length(text) + 1, 1)) return {};
  return {false, text};
}

class String {
 public:
  enum State { kZeroed, kShared, kOwn };
  State state = kZeroed;
  std::string buffer;  // kOwn: `capacity` bytes
  int length = 0;
  int capacity = 0;

  // The text as C text: null when zeroed.
  const char* CText() const {
    return state == kZeroed ? nullptr : state == kShared ? "" : buffer.c_str();
  }

  static String WithCapacity(int size) {
    String s;
    if (size == 0) return s;
    if (!TheHeap().Guarded(static_cast<unsigned long>(long{size}), 1)) return s;
    s.state = kOwn;
    s.capacity = size;
    s.buffer.assign(size, '\0');
    return s;
  }

  void Clear() { *this = String(); }

  void Set(const char* text, int limit) {
    unsigned long n = 0;
    if (text != nullptr && limit != 0) {
      while ((limit < 0 || n < static_cast<unsigned long>(limit)) &&
             text[n] != '\0') {
        ++n;
      }
    }
    if (n == 0) {
      Clear();
      state = kShared;
      capacity = 1;
      return;
    }
    const std::string bytes(text, n);  // the source may be this buffer
    if (n >= static_cast<unsigned long>(capacity)) {
      Clear();
      if (n >= 2147483647UL) throw TooLarge();
      if (!TheHeap().Guarded(n + 1, 1)) return;
      state = kOwn;
      capacity = static_cast<int>(n) + 1;
      buffer.assign(capacity, '\0');
    }
    buffer.replace(0, n, bytes);
    length = static_cast<int>(n);
    buffer[n] = '\0';
  }

  void Copy(const String& other) {
    if (&other == this) return;
    if (other.state == kZeroed) {
      Clear();
    } else {
      Set(other.CText(), -1);
    }
  }

  bool EnsureCapacity(int required) {
    if (required < capacity) return true;
    const long grown = capacity >= 1024 ? capacity / 2 + long{required}
                                        : long{required} + 256;
    if (grown > INT_MAX) throw TooLarge();
    if (!TheHeap().Guarded(static_cast<unsigned long>(grown), 1)) return false;
    std::string block(static_cast<unsigned long>(grown), '\0');
    if (state == kOwn) block.replace(0, length + 1, buffer, 0, length + 1);
    buffer = block;
    capacity = static_cast<int>(grown);
    state = kOwn;
    return true;
  }

  void AppendChar(char c) {
    if (!EnsureCapacity(length + 1)) return;
    buffer[length] = c;
    ++length;
    buffer[length] = '\0';
  }

  void AppendString(const char* text) {
    if (text != nullptr) AppendCounted(text, Length(text));
  }
  void AppendString(const char* text, int n) {
    if (text == nullptr) return;
    const unsigned long all = Length(text);
    AppendCounted(text, static_cast<unsigned long>(n) < all ? n : all);
  }
  void AppendThreeChars(const char* c) {
    for (int i = 0; i < 3; ++i) AppendChar(c[i]);
  }
  void AppendHexByte(unsigned char byte) {
    AppendChar(HexDigit(byte >> 4));
    AppendChar(HexDigit(byte));
  }

  void Truncate(unsigned new_length) {
    if (static_cast<unsigned>(length) <= new_length) return;
    buffer[new_length] = '\0';
    length = static_cast<int>(new_length);
  }
  void RemoveTrailingSpaces() {
    while (length > 0) {
      const char c = buffer[length - 1];
      if (c != '\t' && c != '\n' && c != '\r' && c != ' ') return;
      --length;
      buffer[length] = '\0';
    }
  }

  // Byte order of two C texts: negative, 0 or positive.
  static int Order(const char* a, const char* b) {
    unsigned long i = 0;
    while (a[i] != '\0' && a[i] == b[i]) ++i;
    return static_cast<unsigned char>(a[i]) - static_cast<unsigned char>(b[i]);
  }
  bool Equals(const String& other) const {
    if (&other == this) return true;
    if (state == kZeroed || other.state == kZeroed) return state == other.state;
    return Order(CText(), other.CText()) == 0;
  }
  bool Equals(const char* other) const {
    if (state == kZeroed || other == nullptr) return CText() == other;
    return Order(CText(), other) == 0;
  }
  bool Less(const String& other) const {
    if (&other == this || other.state == kZeroed) return false;
    if (state == kZeroed) return other.CText()[0] != '\0';
    return Order(CText(), other.CText()) < 0;
  }

  void ToUpper() { Fold('a', 'z', -32); }
  void ToLower() { Fold('A', 'Z', 32); }

  String SubString(int start, int end) const {
    String result;
    if (end == -1) end = length - 1;
    if (start < 0 || start >= length || end < start || end >= length) {
      return result;
    }
    const int count = end - start + 1;
    TheHeap().Guarded(static_cast<unsigned long>(count) + 1, 0);
    const std::string scratch = buffer.substr(start, count);
    result.Set(scratch.c_str(), -1);
    return result;
  }

  double CharCodeAt(int index) const {
    if (index < 0 || index >= length) return std::nan("");
    const int byte = static_cast<unsigned char>(buffer[index]);
    return byte < 128 ? byte : byte - 256;
  }

  static String CharFromCode(double code) {
    const double whole = std::trunc(code);
    long value = INT_MIN;
    if (whole >= -2147483648.0 && whole <= 2147483647.0) {
      value = static_cast<long>(whole);
    }
    const char text[2] = {static_cast<char>(value & 0xFF), '\0'};
    String result;
    result.Set(text, -1);
    return result;
  }

  void AppendInt(long value, int radix) {
    if (radix < 2 || radix > 36) return;
    if (value == 0) {
      AppendChar('0');
      return;
    }
    unsigned long magnitude = static_cast<unsigned long>(value);
    if (value < 0 && radix == 10) {
      AppendChar('-');
      magnitude = 0 - magnitude;
    }
    std::string digits;  // least significant first
    const auto base = static_cast<unsigned long>(radix);
    for (; magnitude != 0; magnitude /= base) {
      const auto d = static_cast<int>(magnitude % base);
      digits += static_cast<char>(d < 10 ? '0' + d : 'a' + d - 10);
    }
    for (auto d = digits.rbegin(); d != digits.rend(); ++d) AppendChar(*d);
  }

  void AppendNDigits(int value, int digits) {
    String measure;
    measure.AppendInt(value, 10);
    for (long zeros = long{digits} - measure.length; zeros > 0; --zeros) {
      AppendChar('0');
    }
    AppendInt(value, 10);
  }

  void AppendDouble(double value) {
    std::string text;
    if (!Replay(TheHost().doubleText(value), &text) || text.empty()) return;
    AppendString(text.c_str());
  }

  void AppendFormat(const char* format, const std::vector<FormatArg>& args) {
    if (format == nullptr) return;
    unsigned long next = 0;
    auto arg = [&]() -> const FormatArg& { return args.at(next++); };
    for (const char* p = format; *p != '\0'; ++p) {
      if (*p != '%') {
        AppendChar(*p);
        continue;
      }
      ++p;
      if (*p == '\0') return;
      if (*p == '%') AppendChar('%');
      if (*p == 'p') {
        AppendString("0x");
        AppendInt(arg().integer, 16);
      }
      if (*p == 's') AppendString(arg().text);
      if (*p == 'd') AppendInt(arg().integer, 10);
      if (*p == 'x') AppendInt(arg().integer, 16);
      if (*p == 'c') AppendChar(static_cast<char>(arg().integer & 0xFF));
      if (*p == 'b') AppendChar(arg().integer != 0 ? 't' : 'f');
      if (*p == 'f') AppendDouble(arg().real);
      if (*p == '3') AppendThreeChars(arg().text);
      if (*p == '2') AppendNDigits(static_cast<int>(arg().integer), 2);
    }
  }
  void Format(const char* format, const std::vector<FormatArg>& args) {
    Clear();
    AppendFormat(format, args);
  }

  void EncodeString(const char* text, int version, bool plus, bool convert) {
    if (text == nullptr) return;
    const std::string source = Converted(text, version >= 6 && convert);
    for (unsigned char b : source) {
      if (IsAlnum(b)) AppendChar(static_cast<char>(b));
      else if (b == ' ' && plus) AppendChar('+');
      else AppendEscape(b);
    }
  }
  void EncodeStringHighAscii(const char* text, int version) {
    if (text == nullptr) return;
    for (unsigned char b : Converted(text, version >= 6)) {
      if (b < 0x80) AppendChar(static_cast<char>(b));
      else AppendEscape(b);
    }
  }

  HeapText Escaped(Escape rule) const {
    if (length == 0) return {};
    String work;
    const char* p = CText();
    while (*p != '\0') {
      const auto width = static_cast<unsigned>(
          TheHost().bytesInChar(static_cast<unsigned char>(*p)));
      if (width >= 2) {
        for (unsigned i = 0; i < width && *p != '\0'; ++i) {
          work.AppendEscape(static_cast<unsigned char>(*p++));
        }
      } else if (Keeps(rule, static_cast<unsigned char>(*p))) {
        work.AppendChar(*p++);
      } else {
        work.AppendEscape(static_cast<unsigned char>(*p++));
      }
    }
    return CreateStr(work.state == kZeroed ? "" : work.CText());
  }

 private:
  void AppendCounted(const char* text, unsigned long n) {
    if (static_cast<unsigned long>(length) + n >= 2147483647UL) throw Aborted();
    if (!EnsureCapacity(length + static_cast<int>(n) + 1)) return;
    buffer.replace(length, n, text, n);
    length += static_cast<int>(n);
    buffer[length] = '\0';
  }
  void AppendEscape(unsigned char byte) {
    AppendChar('%');
    AppendHexByte(byte);
  }
  void Fold(char first, char last, int shift) {
    if (state != kOwn) return;
    for (char& c : buffer) {
      if (c == '\0') return;
      if (c >= first && c <= last) c = static_cast<char>(c + shift);
    }
  }
  static std::string Converted(const char* text, bool convert) {
    std::string converted;
    if (convert && Replay(TheHost().codePage(text), &converted)) {
      return converted;
    }
    return text;
  }
  static bool Keeps(Escape rule, unsigned char b) {
    const std::string marks = "!\"#$%&'()*+,-./:;=?@[]_~";
    switch (rule) {
      case Escape::kStrict: return IsAlnum(b) || b == '-' || b == '.';
      case Escape::kLenient: return true;
      case Escape::kUpper128: return b < 0x80;
      case Escape::kUrl:
        return IsAlnum(b) || marks.find(static_cast<char>(b)) != marks.npos;
    }
    return false;
  }
};

// ---- Heap texts ----
inline HeapText CreateStr(unsigned long n) {
  if (!TheHeap().Guarded(n + 1, 1)) return {};
  return {false, ""};
}
inline HeapText CreateStr(const char* text, unsigned long n) {
  if (text == nullptr || !TheHeap().Guarded(n + 1, 1)) return {};
  return {false, std::string(text, n)};
}
inline HeapText ConcatStr(const char* a, const char* b) {
  if (a == nullptr || b == nullptr) return {};
  if (!TheHeap().Guarded(Length(a) + Length(b) + 1, 1)) return {};
  return {false, std::string(a) + b};
}
inline HeapText U64ToChar(unsigned long long value) {
  if (!TheHeap().Take(21, 1)) return {};
  std::string digits;
  do {
    digits.insert(digits.begin(), static_cast<char>('0' + value % 10));
    value /= 10;
  } while (value != 0);
  return {false, digits};
}

// ---- Comparison and search: offsets for pointers, -1 for null ----
inline int Lower(char c) {
  const int b = static_cast<unsigned char>(c);
  return b >= 'A' && b <= 'Z' ? b + 32 : b;
}
inline int Signed(char c) {
  const int b = static_cast<unsigned char>(c);
  return b < 128 ? b : b - 256;
}
inline int ICmp(const char* a, const char* b) {
  for (unsigned long i = 0;; ++i) {
    if (Lower(a[i]) != Lower(b[i])) return Lower(a[i]) - Lower(b[i]);
    if (a[i] == '\0') return 0;
  }
}
inline int NICmp(const char* a, const char* b, unsigned long n) {
  if (n == 0) return 0;
  unsigned long i = 0;
  while (i < n - 1 && a[i] != '\0' && Lower(a[i]) == Lower(b[i])) ++i;
  return Lower(a[i]) - Lower(b[i]);
}
inline bool StrEqual(const char* a, const char* b) {
  return a != nullptr && b != nullptr && ICmp(a, b) == 0;
}
inline bool VarStrEqual(const char* a, const char* b, bool caseSensitive) {
  if (a == nullptr || b == nullptr) return false;
  return caseSensitive ? String::Order(a, b) == 0 : ICmp(a, b) == 0;
}
inline long Chr(const char* s, int c) {
  for (long i = 0; s[i] != '\0'; ++i) {
    if (Signed(s[i]) == c) return i;
  }
  return -1;
}
inline long RChr(const char* s, int c) {
  for (long i = static_cast<long>(Length(s)) - 1; i >= 0; --i) {
    if (Signed(s[i]) == c) return i;
  }
  return -1;
}
inline long Find(const char* haystack, const char* needle, bool ignoreCase) {
  auto same = [&](char a, char b) {
    return ignoreCase ? Lower(a) == Lower(b) : a == b;
  };
  if (needle == nullptr || needle[0] == '\0') return haystack ? 0 : -1;
  for (long p = 0; haystack[p] != '\0'; ++p) {
    long k = 0;
    while (needle[k] != '\0' && same(haystack[p + k], needle[k])) ++k;
    if (needle[k] == '\0') return p;
  }
  return -1;
}

// ---- Stripping ----
inline unsigned Value(char c) { return static_cast<unsigned char>(c); }
inline unsigned Value(unsigned short unit) { return unit; }
inline unsigned Upper(unsigned v) { return v >= 'a' && v <= 'z' ? v - 32 : v; }

template <typename Unit>
long StripPrefix(const Unit* text, const char* prefix, bool ignoreCase) {
  if (text == nullptr || prefix == nullptr) return -1;
  long i = 0;
  for (;; ++i) {
    unsigned t = Value(text[i]);
    unsigned p = Value(prefix[i]);
    if (ignoreCase) {
      t = Upper(t);
      p = Upper(p);
    }
    if (t != p || t == 0) break;
  }
  return prefix[i] == '\0' ? i : -1;
}
inline long StripWhitespace(const char* text) {
  if (text == nullptr) return -1;
  long i = 0;
  while (text[i] == ' ' || (text[i] >= 9 && text[i] <= 13)) ++i;
  return i;
}
inline long StripScheme(const char* text, const char* scheme) {
  const long space = StripWhitespace(text);
  if (space < 0) return -1;
  const long rest = StripPrefix(text + space, scheme, true);
  return rest < 0 ? -1 : space + rest;
}
inline long StripAtMostTwoSlashes(const char* text) {
  if (text == nullptr) return -1;
  if (text[0] != '/') return 0;
  return text[1] == '/' ? 2 : 1;
}

// ---- Numbers ----
// The decimal value of at most `n` elements, wrapping modulo 2^64; the
// narrower readers keep its low bits.
template <typename Unit>
unsigned long long Decimal(const Unit* text, unsigned long n, bool sign) {
  if (text == nullptr || n == 0) return 0;
  unsigned long i = 0;
  const bool negative = sign && text[0] == '-';
  if (negative) i = 1;
  unsigned long long value = 0;
  for (; i < n && text[i] >= '0' && text[i] <= '9'; ++i) {
    value = value * 10 + static_cast<unsigned>(text[i] - '0');
  }
  return negative ? 0 - value : value;
}
inline int ParseHexChar(char c) {
  if (c >= '0' && c <= '9') return c - 48;
  if (c >= 'A' && c <= 'F') return c - 55;
  if (c >= 'a' && c <= 'f') return c - 87;
  return -1;
}
inline int ParseHexCouple(char hi, char lo, char* out) {
  if (ParseHexChar(hi) < 0) return 0;
  if (ParseHexChar(lo) < 0) return 1;
  *out = static_cast<char>(ParseHexChar(hi) * 16 + ParseHexChar(lo));
  return 2;
}

// Undoes percent escapes (either case), and '+' as a space when `plus`.
inline std::string PercentDecode(const std::string& text, bool plus) {
  std::string out;
  for (unsigned long i = 0; i < text.size(); ++i) {
    if (text[i] == '%' && i + 2 < text.size() &&
        ParseHexChar(text[i + 1]) >= 0 && ParseHexChar(text[i + 2]) >= 0) {
      out += static_cast<char>(ParseHexChar(text[i + 1]) * 16 +
                               ParseHexChar(text[i + 2]));
      i += 2;
    } else {
      out += plus && text[i] == '+' ? ' ' : text[i];
    }
  }
  return out;
}

}  // namespace model

#endif  // VESK_FUZZ_MODEL_MODEL_H
