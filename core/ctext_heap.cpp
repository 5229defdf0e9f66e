// Heap texts handed to callers: copies, empty buffers, concatenations and
// decimal renderings. Every size but U64ToChar's passes the size guard.
#include <cstring>

#include "decimal_digits.h"
#include "host/vm_string.h"
#include "internal.h"
#include "veskstring.h"

namespace {

char* Request(unsigned long count) {
  return vesk::RequestBlock(count, Pelgc::kMayReturnNull);
}

}  // namespace

char* CreateStr(const char* text) {
  if (text == nullptr) return nullptr;
  const unsigned long count = std::strlen(text) + 1;
  char* copy = Request(count);
  if (copy != nullptr) std::memcpy(copy, text, count);
  return copy;
}

char* CreateStr(unsigned long n) {
  char* text = Request(n + 1);  // n = 2^64 - 1 wraps to 0: null, no request
  if (text != nullptr) text[0] = '\0';
  return text;
}

char* CreateStr(const char* text, unsigned long n) {
  if (text == nullptr) return nullptr;
  char* copy = Request(n + 1);
  if (copy == nullptr) return nullptr;
  std::memcpy(copy, text, n);
  copy[n] = '\0';
  return copy;
}

char* CreateStr(marlo::String* string) {
  // The view takes a null string too, and releases its buffer at scope
  // end, also when the request below throws.
  marlo::StUTF8String view(string);
  return CreateStr(view.c_str(),
                   static_cast<unsigned long>(long{view.length()}));
}

char* ConcatStr(const char* a, const char* b) {
  if (a == nullptr || b == nullptr) return nullptr;
  const unsigned long lengthA = std::strlen(a);
  const unsigned long lengthB = std::strlen(b);
  char* text = Request(lengthA + lengthB + 1);
  if (text == nullptr) return nullptr;
  std::memcpy(text, a, lengthA);
  std::memcpy(text + lengthA, b, lengthB + 1);
  return text;
}

char* U64ToChar(unsigned long long value) {
  // 20 digits hold the largest value; the size needs no guard.
  auto* text = static_cast<char*>(Pelgc::SystemNew(21, Pelgc::kMayReturnNull));
  if (text == nullptr) return nullptr;
  char digits[20];
  char* const end = digits + sizeof digits;
  const char* first = vesk::PutDecimal(static_cast<unsigned long>(value), end);
  const auto length = static_cast<std::size_t>(end - first);
  std::memcpy(text, first, length);
  text[length] = '\0';
  return text;
}
