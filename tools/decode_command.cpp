// The decode command, the way back from the encodings: each percent escape
// becomes its byte, read with the module's ParseHexCouple.
#include <string>

#include "cli.h"
#include "core/veskstring.h"

namespace vesktext {

namespace {

class Decoder {
 public:
  Decoder(bool plusForSpace, bool strict)
      : m_plusForSpace(plusForSpace), m_strict(strict) {}

  // Decodes the piece up to a '%' whose escape may go on in the next piece
  // (one of its last two bytes), which is left for that piece.
  std::size_t Feed(const LinePiece& piece) {
    const char* text = piece.text;
    const std::size_t n = piece.size;
    m_out.clear();
    std::size_t i = 0;
    while (i < n) {
      // A run of bytes that stay as they are. (Not strcspn: a checker of
      // string bounds may measure the whole rest of the piece each call.)
      const std::size_t from = i;
      while (i < n && text[i] != '%' && (text[i] != '+' || !m_plusForSpace)) {
        ++i;
      }
      m_out.append(text + from, i - from);
      if (i == n) break;
      if (text[i] == '+') {
        m_out += ' ';
        ++i;
        continue;
      }
      if (!piece.lineEnd && n - i < 3) break;
      i += Escape(piece, i);
    }
    Write(m_out.data(), m_out.size());
    EndLine(piece.lineEnd);
    return i;
  }

 private:
  // The '%' at text[i] and what follows it: its byte for an escape, else
  // the '%' as it is, or an error. Returns the bytes read.
  std::size_t Escape(const LinePiece& piece, std::size_t i) {
    const char* text = piece.text;
    const char low = i + 1 < piece.size ? text[i + 2] : '\0';
    char byte;
    if (ParseHexCouple(text[i + 1], low, &byte) == 2) {
      m_out += byte;
      return 3;
    }
    if (m_strict) {
      throw RunError(Where(piece) + ", column " +
                     std::to_string(piece.offset + i + 1) +
                     ": '%' does not begin an escape ('%' and two hex "
                     "digits)");
    }
    m_out += '%';
    return 1;
  }

  const bool m_plusForSpace, m_strict;
  std::string m_out;
};

}  // namespace

int RunDecode(const Invocation& invocation) {
  Decoder decoder(invocation.Has("--plus"), invocation.Has("--strict"));
  ForEachLine(invocation.operands, [&decoder](const LinePiece& piece) {
    return decoder.Feed(piece);
  });
  return 0;
}

}  // namespace vesktext
