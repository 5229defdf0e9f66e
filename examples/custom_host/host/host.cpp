// The definitions behind this host's four headers: what vesk::core calls,
// and the few object builders that main.cpp uses. One thread at a time.
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

#include "core/veskstring.h"
#include "host/memory_manager.h"
#include "host/object_model.h"
#include "host/text_services.h"
#include "host/vm_string.h"

// ---- memory_manager.h: a fixed arena ---------------------------------------
// Blocks are cut in turn from one static buffer, each rounded up to 16
// bytes. A release only counts; the arena starts over once every block is
// back. A real runtime puts its own allocator here.

namespace {

constexpr std::size_t kArenaBytes = 64 * 1024;
constexpr std::size_t kAlign = 16;
alignas(kAlign) unsigned char g_arena[kArenaBytes];
std::size_t g_used = 0;
unsigned long g_live = 0;
Pelgc::GCHeap g_heap;

}  // namespace

namespace Pelgc {

void* SystemNew(unsigned long size, FixedMallocOpts opts) {
  if (size == 0 || size > kArenaBytes - g_used) {
    if (opts == kMayReturnNull) return nullptr;
    throw std::bad_alloc();
  }
  // What is left is a multiple of 16 bytes too, so the rounded size fits.
  void* block = g_arena + g_used;
  g_used += (size + kAlign - 1) / kAlign * kAlign;
  ++g_live;
  return block;
}

void SystemDelete(void* block) noexcept {
  if (block == nullptr || g_live == 0) return;
  if (--g_live == 0) g_used = 0;
}

void GCHeap::SignalObjectTooLarge() {
  std::fputs("custom host: request too large\n", stderr);
  std::abort();
}

void GCHeap::Abort() {
  std::fputs("custom host: heap abort\n", stderr);
  std::abort();
}

GCHeap* GCHeap::instance = &g_heap;

unsigned long ArenaLiveBlocks() { return g_live; }

}  // namespace Pelgc

// ---- text_services.h: ISO-8859-1 -------------------------------------------

namespace {

// A heap copy of `length` bytes of `text` with a NUL after them, or null.
char* CopyToHeap(const char* text, std::size_t length) {
  auto* copy =
      static_cast<char*>(Pelgc::SystemNew(length + 1, Pelgc::kMayReturnNull));
  if (copy == nullptr) return nullptr;
  std::memcpy(copy, text, length);
  copy[length] = '\0';
  return copy;
}

// Decodes the UTF-8 character at `*text` and steps past it; -1 for a byte
// that does not begin a well-formed character (the byte is stepped over).
long NextCodePoint(const unsigned char** text) {
  const unsigned char* p = *text;
  const unsigned char lead = *p++;
  int more = 0;
  long code = lead;
  long least = 0;
  if (lead >= 0xC2 && lead <= 0xDF) {
    more = 1, code = lead & 0x1F, least = 0x80;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    more = 2, code = lead & 0x0F, least = 0x800;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    more = 3, code = lead & 0x07, least = 0x10000;
  } else if (lead >= 0x80) {
    *text = p;
    return -1;
  }
  for (int i = 0; i < more; ++i, ++p) {
    if ((*p & 0xC0) != 0x80) {
      *text = p;
      return -1;
    }
    code = (code << 6) | (*p & 0x3F);
  }
  *text = p;
  const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
  return code < least || code > 0x10FFFF || surrogate ? -1 : code;
}

}  // namespace

double VeskNaN() { return std::nan(""); }

char* ConvertDoubleToString(double value) {
  if (std::isnan(value)) return CopyToHeap("NaN", 3);
  char text[32];
  const auto result = std::to_chars(text, text + sizeof text, value);
  return CopyToHeap(text, static_cast<std::size_t>(result.ptr - text));
}

char* CreateMBCSFromUTF8(const char* utf8, bool /*terminate*/) {
  if (utf8 == nullptr) return nullptr;
  std::string latin1;
  for (auto* p = reinterpret_cast<const unsigned char*>(utf8); *p != 0;) {
    const long code = NextCodePoint(&p);
    if (code < 0) return nullptr;
    latin1 += code <= 0xFF ? static_cast<char>(code) : '?';
  }
  return CopyToHeap(latin1.data(), latin1.size());
}

int PlayerBytesInChar(unsigned char /*lead*/) { return 1; }

// ---- vm_string.h -----------------------------------------------------------

namespace {

// `text` as UTF-16 units: UTF-8 decoded, ill-formed bytes as U+FFFD, or
// with `latin1` each byte as its own character.
std::basic_string<unsigned short> ToUnits(const char* text, bool latin1) {
  std::basic_string<unsigned short> units;
  for (auto* p = reinterpret_cast<const unsigned char*>(text); *p != 0;) {
    long code = *p;
    if (latin1) {
      ++p;
    } else if ((code = NextCodePoint(&p)) < 0) {
      code = 0xFFFD;
    }
    if (code >= 0x10000) {
      code -= 0x10000;
      units += static_cast<unsigned short>(0xD800 + (code >> 10));
      code = 0xDC00 + (code & 0x3FF);
    }
    units += static_cast<unsigned short>(code);
  }
  return units;
}

}  // namespace

namespace marlo {

String::String(const char* utf8)
    : m_units(utf8 != nullptr ? ToUnits(utf8, false)
                              : std::basic_string<unsigned short>()) {}

String::String(const unsigned short* units, int count)
    : m_units(units, count > 0 ? static_cast<std::size_t>(count) : 0) {}

StUTF8String::StUTF8String(String* string) {
  if (string == nullptr) return;
  std::string utf8;
  const unsigned short* units = string->Units();
  for (int i = 0; i < string->Length(); ++i) {
    unsigned long code = units[i];
    const bool high = code >= 0xD800 && code <= 0xDBFF;
    if (high && i + 1 < string->Length() && units[i + 1] >= 0xDC00 &&
        units[i + 1] <= 0xDFFF) {
      code = 0x10000 + ((code - 0xD800) << 10) + (units[++i] - 0xDC00);
    } else if (code >= 0xD800 && code <= 0xDFFF) {
      code = 0xFFFD;  // an unpaired surrogate
    }
    if (code < 0x80) {
      utf8 += static_cast<char>(code);
    } else if (code < 0x800) {
      utf8 += static_cast<char>(0xC0 | code >> 6);
      utf8 += static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
      utf8 += static_cast<char>(0xE0 | code >> 12);
      utf8 += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
      utf8 += static_cast<char>(0x80 | (code & 0x3F));
    } else {
      utf8 += static_cast<char>(0xF0 | code >> 18);
      utf8 += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
      utf8 += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
      utf8 += static_cast<char>(0x80 | (code & 0x3F));
    }
  }
  if (utf8.size() < sizeof m_inline) {
    std::memcpy(m_inline, utf8.c_str(), utf8.size() + 1);
  } else if ((m_heap = CopyToHeap(utf8.data(), utf8.size())) == nullptr) {
    throw std::bad_alloc();
  }
  m_length = static_cast<int>(utf8.size());
}

StUTF8String::~StUTF8String() {
  if (m_heap != nullptr) Pelgc::SystemDelete(m_heap);
}

}  // namespace marlo

VeskString16::VeskString16(CorePlayer* /*player*/, const char* text,
                           int version) {
  // Older content is in the code page, ISO-8859-1.
  if (text != nullptr)
    m_rep.m_units = ToUnits(text, version < kFirstUtf8Version);
}

// ---- object_model.h --------------------------------------------------------

ScriptAtom ScriptAtom::FromBool(bool value) {
  ScriptAtom atom(Kind::kBoolean);
  atom.m_boolean = value;
  return atom;
}

ScriptAtom ScriptAtom::FromNumber(double value) {
  ScriptAtom atom(Kind::kNumber);
  atom.m_number = value;
  return atom;
}

ScriptAtom ScriptAtom::FromString(const char* utf8) {
  ScriptAtom atom(Kind::kString);
  atom.m_string = utf8 != nullptr ? utf8 : "";
  return atom;
}

char* ScriptAtom::Get8BitCopyOfStringData() const {
  if (m_kind != Kind::kString) return nullptr;
  return CopyToHeap(m_string.data(), m_string.size());
}

Pelgc::GCAPI::GCRef<ScriptObject> ScriptObject::Create() {
  return Pelgc::GCAPI::GCRef<ScriptObject>(std::make_shared<ScriptObject>());
}

void ScriptObject::SetVariable(const char* name, const ScriptAtom& value,
                               std::uint16_t flags) {
  if (name == nullptr) return;
  for (ScriptVariable& variable : m_variables) {
    if (variable.m_name.StringData() == name) {
      variable.value = RCScriptAtom(value);
      variable.m_flags = flags;
      return;
    }
  }
  m_variables.emplace_back(name, value, flags);
}

ScriptVariableIterator::ScriptVariableIterator(
    Pelgc::GCAPI::GCRef<ScriptObject> object, bool /*includeInherited*/)
    : m_object(std::move(object)),
      m_end(m_object.get() != nullptr ? m_object->m_variables.size() : 0) {}

ScriptVariable* ScriptVariableIterator::Next() {
  return m_next < m_end ? &m_object->m_variables[m_next++] : nullptr;
}

char* CorePlayer::ToString(const ScriptAtom& value) {
  switch (value.GetKind()) {
    case ScriptAtom::Kind::kUndefined: return CopyToHeap("undefined", 9);
    case ScriptAtom::Kind::kNull: return CopyToHeap("null", 4);
    case ScriptAtom::Kind::kBoolean:
      return value.Boolean() ? CopyToHeap("true", 4) : CopyToHeap("false", 5);
    case ScriptAtom::Kind::kNumber:
      return ConvertDoubleToString(value.Number());
    case ScriptAtom::Kind::kString: return value.Get8BitCopyOfStringData();
  }
  return nullptr;
}
