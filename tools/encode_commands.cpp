// The encoding commands over lines of any length: each line is handed to
// the module in pieces, each piece encoded on its own and written out at
// once, so memory stays bounded. A piece is cut only where the module's
// output for the whole line is the output for the part before the cut
// followed by that for the part after it. The module reads every byte at
// one place in these walks, by itself or with the bytes of its character,
// so such a cut is one where no character spans it:
// - form encoding (form, high) reads bytes one at a time; only a
//   conversion to the code page reads them as UTF-8 characters;
// - the escaped copies (escape, upper128, url) walk by the characters of
//   the code page, as the host's width rule measures them.
// A cut after a byte below 0x40 serves both where it is a character of
// its own: no code page the host offers begins a longer one with it, and
// in UTF-8 it is ASCII. Where a long stretch holds no such byte, each
// rule below finds another place.
#include <algorithm>
#include <cstdio>
#include <memory>
#include <new>
#include <vector>

#include "cli.h"
#include "core/veskstring.h"
#include "host/text_services.h"
#include "host/utf.h"

namespace vesktext {

namespace {

// Below 6 the module takes content as it is, never converting it.
constexpr int kBeforeUtf8 = 5;

unsigned char Byte(const char* text, std::size_t i) {
  return static_cast<unsigned char>(text[i]);
}

// After the last byte below 0x40 of [text, text + n) at which `closes`
// holds, or 0 for none.
template <class Closes>
std::size_t AfterLowByte(const char* text, std::size_t n, Closes closes) {
  for (std::size_t i = n; i-- > 0;) {
    if (Byte(text, i) < 0x40 && closes(i)) return i + 1;
  }
  return 0;
}

// For form encoding without conversion every byte is encoded alone, and
// the fallback, the whole piece, is as good a cut as any.
std::size_t ByteCut(const char* text, std::size_t n) {
  const std::size_t cut =
      AfterLowByte(text, n, [](std::size_t) { return true; });
  return cut != 0 ? cut : n;
}

// With conversion the host reads a text as UTF-8, where a byte below 0x40
// is a character of its own. Otherwise the cut goes before the last byte
// that is not a continuation byte (0x80 to 0xBF): the host's reading of a
// character stops at such a byte, so none spans it. A piece whose bytes
// after the first are all continuation bytes, if more than the three a
// character has, shows that the line is not UTF-8: it goes unconverted,
// and any cut serves. A piece too short to show it waits for more.
std::size_t Utf8Cut(const char* text, std::size_t n) {
  std::size_t cut = AfterLowByte(text, n, [](std::size_t) { return true; });
  for (std::size_t i = n - 1; cut == 0 && i > 0 && i < n; --i) {
    if ((Byte(text, i) & 0xC0) != 0x80) cut = i;
  }
  return cut != 0 ? cut : n > 4 ? n : 0;
}

// The host's width rule: the bytes each byte value's character takes.
struct Widths {
  Widths() {
    for (int lead = 0; lead < 256; ++lead) {
      const auto width = static_cast<unsigned>(
          PlayerBytesInChar(static_cast<unsigned char>(lead)));
      of[lead] = width >= 2 ? width : 1;
      widest = std::max<std::size_t>(widest, of[lead]);
    }
  }
  unsigned of[256];
  std::size_t widest = 1;
};

// The escaped copies take the width-1 bytes after a character's first as
// its own, whatever they are: a byte below 0x40, never a first byte of a
// longer character, may still be taken so (in UTF-8, 0xF0 takes the three
// bytes after it). It is a character of its own when no byte in the
// widest-1 before it begins a character that reaches it: the piece starts
// with a character, so one of them would. The fallback walks the piece by
// characters, as the module does, to the end of the last whole one.
std::size_t CharacterCut(const Widths& widths, const char* text,
                         std::size_t n) {
  const std::size_t cut = AfterLowByte(text, n, [&](std::size_t i) {
    const std::size_t from = i >= widths.widest ? i + 1 - widths.widest : 0;
    for (std::size_t j = from; j < i; ++j) {
      if (j + widths.of[Byte(text, j)] > i) return false;
    }
    return true;
  });
  if (cut != 0) return cut;
  std::size_t end = 0;
  while (end < n && end + widths.of[Byte(text, end)] <= n) {
    end += widths.of[Byte(text, end)];
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
    const std::size_t cut = piece.lineEnd ? piece.size
                            : m_converts  ? Utf8Cut(piece.text, piece.size)
                                          : ByteCut(piece.text, piece.size);
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
      if (Byte(text, i) >= 0x80) return false;
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

  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  const int m_version;
  const bool m_plusForSpace, m_high, m_converts;
  Line m_line = Line::kUndecided;
  std::unique_ptr<std::FILE, Closer> m_held;
  std::unique_ptr<VeskString> m_out;
};

// Writes, for each line, the heap texts `create` makes of its pieces.
int PrintEscapedCopies(const Invocation& invocation,
                       char* (*create)(const VeskString& text)) {
  const Widths widths;
  ForEachLine(invocation.operands, [&](const LinePiece& piece) {
    const std::size_t cut = piece.lineEnd
                                ? piece.size
                                : CharacterCut(widths, piece.text, piece.size);
    return WriteFront(piece, cut, [create](const char* text, std::size_t n) {
      const VeskString source(text);
      WriteHeapText(create(source), n == 0);
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
  if (invocation.Has("--strict")) {
    return PrintEscapedCopies(invocation, [](const VeskString& text) {
      return text.CreateEscapedCStr(true);
    });
  }
  return PrintEscapedCopies(invocation, [](const VeskString& text) {
    return text.CreateEscapedCStr(false);
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
