// The encoding commands over lines of any length: each line is handed to
// the module in pieces, each piece encoded on its own and written out at
// once, so memory stays bounded. A piece is cut only where the module's
// output for the whole line is the output for the part before the cut
// followed by that for the part after it: where no character spans it.
// Form encoding (form, high) reads bytes one at a time, but a conversion
// to the code page reads UTF-8 characters as the host does; the escaped
// copies (escape, upper128, url) walk by the host's width rule.
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "cli.h"
#include "core/veskstring.h"
#include "host/memory_manager.h"
#include "host/utf.h"

namespace vesktext {

namespace {

// Before the last character of the piece that the host reads as UTF-8:
// whether that one is whole is known only with the bytes after it. 0 for
// a piece of one character, to wait for more.
std::size_t Utf8Cut(const char* text, std::size_t n) {
  const auto* begin = reinterpret_cast<const unsigned char*>(text);
  std::size_t cut = 0;
  for (std::size_t at = 0; at < n;) {
    char32_t code;
    const std::size_t width =
        vesk_host::DecodeUtf8(begin + at, begin + n, &code);
    cut = at;
    at += width;
  }
  return cut;
}

// The end of the last whole character of the piece, walking it as the
// module does by the host's width rule; the piece begins with a character.
std::size_t CharacterCut(const unsigned (&widths)[256], const char* text,
                         std::size_t n) {
  std::size_t end = 0;
  while (end < n) {
    const unsigned width = widths[static_cast<unsigned char>(text[end])];
    if (end + (width > 1 ? width : 1) > n) break;
    end += width > 1 ? width : 1;
  }
  return end;
}

// Runs `write` over the front `cut` bytes of the piece, ended by a NUL for
// the module, and ends the output line with the input line.
template <class Write>
std::size_t WriteFront(const LinePiece& piece, std::size_t cut, Write write) {
  const char after = piece.text[cut];
  piece.text[cut] = '\0';
  write(piece.text, cut);
  piece.text[cut] = after;
  EndLine(piece.lineEnd);
  return cut;
}

// form and high. Converting content to the code page, the host converts a
// text only when all of it is UTF-8: a line that is not goes unconverted
// throughout. Cut as Utf8Cut cuts, a line is UTF-8 when all its pieces
// are, which is known at its end or at its first piece that is not. Till
// then pieces that may come out either way wait in a temporary file, so
// memory stays bounded even for such a line; pieces of ASCII alone, the
// same either way, go at once while none waits.
class FormEncoder {
 public:
  FormEncoder(int version, bool plusForSpace, bool convert, bool high)
      : m_version(version),
        m_plusForSpace(plusForSpace),
        m_high(high),
        m_converts(version > kBeforeUtf8 && convert) {}

  std::size_t Feed(const LinePiece& piece) {
    const std::size_t cut = piece.lineEnd || !m_converts
                                ? piece.size
                                : Utf8Cut(piece.text, piece.size);
    return WriteFront(piece, cut, [&](const char* text, std::size_t n) {
      if (!m_converts) return Encode(text, n, false);
      if (m_line == Line::kUndecided && !Decide(text, n, piece.lineEnd)) {
        return;
      }
      Encode(text, n, m_line == Line::kUtf8);
      if (piece.lineEnd) m_line = Line::kUndecided;
    });
  }

 private:
  enum class Line { kUndecided, kUtf8, kNotUtf8 };

  // Decides the line from a piece where it can, then writes what waits;
  // false when the piece is to wait too.
  bool Decide(const char* text, std::size_t n, bool lineEnd) {
    if (!vesk_host::IsValidUtf8(text, n)) {
      m_line = Line::kNotUtf8;
    } else if (lineEnd) {
      m_line = Line::kUtf8;
    } else if (m_held == nullptr && IsAscii(text, n)) {
      return true;
    } else {
      Hold(text, n);
      return false;
    }
    Release();
    return true;
  }

  static bool IsAscii(const char* text, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
      if (static_cast<unsigned char>(text[i]) >= 0x80) return false;
    }
    return true;
  }

  // Appends a piece, its size first, to the temporary file.
  void Hold(const char* text, std::size_t n) {
    if (m_held == nullptr) m_held.reset(std::tmpfile());
    if (m_held == nullptr || std::fwrite(&n, sizeof n, 1, m_held.get()) != 1 ||
        std::fwrite(text, 1, n, m_held.get()) != n) {
      throw RunError("cannot keep a long line in a temporary file");
    }
  }

  // Encodes the pieces that wait, as the line now is decided.
  void Release() {
    if (m_held == nullptr) return;
    std::FILE* held = m_held.get();
    std::rewind(held);
    std::vector<char> text;
    std::size_t n;
    while (std::fread(&n, sizeof n, 1, held) == 1) {
      text.resize(n + 1);
      if (std::fread(text.data(), 1, n, held) != n) break;
      text[n] = '\0';
      Encode(text.data(), n, m_line == Line::kUtf8);
    }
    const bool failed = std::ferror(held) || !std::feof(held);
    m_held.reset();
    if (failed) throw RunError("cannot read a long line back");
  }

  // Encodes and writes a piece, in a buffer that holds its encoded form
  // before the module starts: it never has to grow, so no byte can be
  // dropped for want of memory.
  void Encode(const char* text, std::size_t n, bool convert) {
    const std::size_t room = 3 * n + 2;
    if (m_out == nullptr ||
        static_cast<std::size_t>(m_out->Capacity()) < room) {
      m_out.reset();
      m_out = std::make_unique<VeskString>(static_cast<int>(room));
      if (static_cast<std::size_t>(m_out->Capacity()) < room) {
        throw std::bad_alloc();
      }
    }
    m_out->Truncate(0);
    if (m_high) {
      m_out->EncodeStringHighAscii(text, convert ? m_version : kBeforeUtf8);
    } else {
      m_out->EncodeString(text, m_version, m_plusForSpace, convert);
    }
    Write(m_out->Text(), static_cast<std::size_t>(m_out->Length()));
  }

  const int m_version;
  const bool m_plusForSpace, m_high, m_converts;
  Line m_line = Line::kUndecided;
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> m_held{nullptr, std::fclose};
  std::unique_ptr<VeskString> m_out;
};

// Writes, for each line, the heap texts `create` makes of its pieces, and
// releases them. Null is nothing for an empty piece; otherwise the heap
// gave no block.
template <class Create>
int PrintEscapedCopies(const Invocation& invocation, Create create) {
  unsigned widths[256];
  for (int lead = 0; lead < 256; ++lead) {
    widths[lead] = static_cast<unsigned>(
        PlayerBytesInChar(static_cast<unsigned char>(lead)));
  }
  ForEachLine(invocation.operands, [&](const LinePiece& piece) {
    const std::size_t cut = piece.lineEnd
                                ? piece.size
                                : CharacterCut(widths, piece.text, piece.size);
    return WriteFront(piece, cut, [&create](const char* text, std::size_t n) {
      char* copy = create(VeskString(text));
      if (copy == nullptr) {
        if (n != 0) throw std::bad_alloc();
        return;
      }
      Write(copy, std::strlen(copy));
      Pelgc::SystemDelete(copy);
    });
  });
  return 0;
}

int RunFormEncoder(const Invocation& invocation, FormEncoder encoder) {
  ForEachLine(invocation.operands, [&encoder](const LinePiece& piece) {
    return encoder.Feed(piece);
  });
  return 0;
}

}  // namespace

int RunForm(const Invocation& invocation) {
  return RunFormEncoder(invocation,
                        FormEncoder(ContentVersion(invocation),
                                    !invocation.Has("--percent-space"),
                                    invocation.Has("--convert"), false));
}

int RunHigh(const Invocation& invocation) {
  return RunFormEncoder(
      invocation, FormEncoder(ContentVersion(invocation), false, true, true));
}

int RunEscape(const Invocation& invocation) {
  const bool strict = invocation.Has("--strict");
  return PrintEscapedCopies(invocation, [strict](const VeskString& text) {
    return text.CreateEscapedCStr(strict);
  });
}

int RunUpper128(const Invocation& invocation) {
  return PrintEscapedCopies(invocation, [](const VeskString& text) {
    return text.CreateUpper128ASCIIEscapedCStr();
  });
}

int RunUrl(const Invocation& invocation) {
  return PrintEscapedCopies(invocation, [](const VeskString& text) {
    return text.CreateEncodedUrl();
  });
}

}  // namespace vesktext
