// VeskString: slices and single characters by their codes.
#include <climits>
#include <cstring>

#include "host/text_services.h"
#include "internal.h"
#include "veskstring.h"

VeskString VeskString::SubString(int start, int end) const {
  VeskString result;
  if (end == -1) end = m_length - 1;
  if (start < 0 || start >= m_length || end < start || end >= m_length) {
    return result;
  }
  // The slice and its NUL fit the buffer, so the size fits an int.
  const int count = end - start + 1;
  vesk::ScopedBlock scratch(vesk::RequestBuffer(count + 1, Pelgc::kNeverNull));
  std::memcpy(scratch.get(), m_text + start, static_cast<unsigned long>(count));
  scratch.get()[count] = '\0';
  result.Set(scratch.get(), -1);
  return result;
}

double VeskString::CharCodeAt(int index) const {
  if (index < 0 || index >= m_length) return VeskNaN();
  return static_cast<signed char>(m_text[index]);
}

VeskString VeskString::CharFromCode(double code) {
  // NaN, the infinities and values outside int all give INT_MIN (low byte 0).
  const int value = code > -2147483649.0 && code < 2147483648.0
                        ? static_cast<int>(code)
                        : INT_MIN;
  const char text[2] = {static_cast<char>(value & 0xFF), '\0'};
  VeskString result;
  result.Set(text, -1);
  return result;
}
