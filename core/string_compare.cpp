// VeskString: equality, order and case folding.
#include <cstring>

#include "internal.h"
#include "veskstring.h"

namespace {

void FoldInPlace(char* text, const unsigned char* table) {
  if (text == nullptr) return;  // a zeroed string has no text to fold
  for (; *text != '\0'; ++text) {
    *text = static_cast<char>(*text ^ table[static_cast<unsigned char>(*text)]);
  }
}

}  // namespace

bool VeskString::operator==(const VeskString& other) const {
  if (&other == this) return true;
  if (m_text == nullptr || other.m_text == nullptr) {
    return m_text == nullptr && other.m_text == nullptr;
  }
  return std::strcmp(m_text, other.m_text) == 0;
}

bool VeskString::operator==(const char* other) const {
  if (m_text == other) return true;
  if (m_text == nullptr || other == nullptr) return false;
  return std::strcmp(m_text, other) == 0;
}

bool VeskString::operator<(const VeskString& other) const {
  if (&other == this || other.m_text == nullptr) return false;
  if (m_text == nullptr) return other.m_text[0] != '\0';
  return std::strcmp(m_text, other.m_text) < 0;
}

void VeskString::ToUpper() { FoldInPlace(m_text, g_toupper_map); }

void VeskString::ToLower() { FoldInPlace(m_text, g_tolower_map); }
