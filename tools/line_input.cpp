// The lines the commands work on: TEXT operands, or standard input read in
// blocks and handed over in pieces, so that a line of any length passes
// through a buffer of bounded size. And the output they write.
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

#include "cli.h"
#include "core/veskstring.h"
#include "host/memory_manager.h"

namespace vesktext {

namespace {

// Hands a piece to `feed`, with a NUL after it for the module, and returns
// how many bytes it took. A NUL among them would end the text there for
// the module: the line is refused. A result too large to hold is told
// with the line it comes from. (After an error, nothing reads the piece
// again, so its byte after is not put back.)
std::size_t Deliver(const PieceFeed& feed, LinePiece piece) {
  const void* nul = std::memchr(piece.text, '\0', piece.size);
  if (nul != nullptr) {
    const auto at = static_cast<const char*>(nul) - piece.text;
    throw RunError(Where(piece) + " holds a NUL byte (at byte offset " +
                   std::to_string(piece.offset + at) +
                   "), which would end the text there");
  }
  const char after = piece.text[piece.size];
  piece.text[piece.size] = '\0';
  std::size_t taken = 0;
  try {
    taken = feed(piece);
  } catch (const std::exception&) {
    const char* heap = HeapFailure();
    if (heap == nullptr) throw;
    throw RunError(Where(piece) + ": " + heap);
  }
  piece.text[piece.size] = after;
  return taken;
}

// Reads up to `n` bytes of standard input into `to`; 0 at its end.
std::size_t ReadInput(char* to, std::size_t n) {
  for (;;) {
    const ssize_t got = read(STDIN_FILENO, to, n);
    if (got >= 0) return static_cast<std::size_t>(got);
    if (errno != EINTR) throw RunError("cannot read standard input");
  }
}

// Lines are handed over in pieces of about 256 KiB. VESKTEXT_PIECE_SIZE
// sets another size, so that the tests can cross many piece boundaries
// with short inputs.
std::size_t PieceSize() {
  const char* set = std::getenv("VESKTEXT_PIECE_SIZE");
  const unsigned long size =
      set != nullptr ? std::strtoul(set, nullptr, 10) : 0;
  return size > 0 ? size : std::size_t{1} << 18;
}

// Standard input in lines. Whole lines that are in the buffer go at once;
// of a longer line, a piece goes once m_pieceSize bytes of it are in, and
// the feed takes what it can of it, up to a place where a cut leaves its
// output unchanged. What it leaves stays in front and the next piece
// holds it and as much again, so the buffer stays a few pieces large.
class InputLines {
 public:
  explicit InputLines(const PieceFeed& feed) : m_feed(feed) {}

  void Run() {
    m_buffer.resize(m_pieceSize + 1);
    for (;;) {
      const std::size_t got = ReadInput(&m_buffer[m_end], m_want - m_end);
      const std::size_t scanned = m_end;
      m_end += got;
      DeliverLines(scanned);
      if (got == 0) break;
      if (m_end == m_want) DeliverPiece();
    }
    // The end of the input ends a last line without its '\n', even one
    // whose pieces so far were taken whole.
    if (m_end > 0 || m_offset > 0) Take(0, m_end, true);
  }

 private:
  // Hands over every whole line in the buffer; `scanned` bytes at its
  // front are known to hold no '\n'.
  void DeliverLines(std::size_t scanned) {
    std::size_t begin = 0;
    while (const void* found =
               std::memchr(&m_buffer[scanned], '\n', m_end - scanned)) {
      const std::size_t newline =
          static_cast<const char*>(found) - &m_buffer[0];
      Take(begin, newline, true);
      ++m_line;
      m_offset = 0;
      begin = scanned = newline + 1;
    }
    if (begin == 0) return;
    Drop(begin);  // under a piece is left: the next read makes it whole
    m_want = m_pieceSize;
  }

  // Hands over the part of a line in the buffer; keeps what is left and
  // makes room to read as much again.
  void DeliverPiece() {
    const std::size_t taken = Take(0, m_end, false);
    m_offset += taken;
    Drop(taken);
    m_want = m_end + m_pieceSize;
    if (m_buffer.size() < m_want + 1) m_buffer.resize(m_want + 1);
  }

  std::size_t Take(std::size_t begin, std::size_t end, bool lineEnd) {
    return Deliver(m_feed, {&m_buffer[begin], end - begin, lineEnd, m_line,
                            m_offset, false});
  }

  // Moves the bytes from `begin` on to the front.
  void Drop(std::size_t begin) {
    std::memmove(&m_buffer[0], &m_buffer[begin], m_end - begin);
    m_end -= begin;
  }

  const PieceFeed& m_feed;
  std::vector<char> m_buffer;  // one byte beyond the data for its NUL
  std::size_t m_end = 0;       // bytes in the buffer
  const std::size_t m_pieceSize = PieceSize();
  std::size_t m_want = m_pieceSize;  // bytes to have before a piece goes
  unsigned long m_line = 1;
  unsigned long m_offset = 0;  // of the buffer's front within its line
};

}  // namespace

const char* HeapFailure() {
  // The heap's too-large report and its abort mean the same to a user.
  const char* const tooLarge =
      "the result would be over 2 GiB, more than a string holds";
  try {
    throw;
  } catch (const std::bad_alloc&) {
    return "no memory left for the result";
  } catch (const Pelgc::ObjectTooLargeError&) {
    return tooLarge;
  } catch (const Pelgc::HeapAbortError&) {
    return tooLarge;
  } catch (...) {
    return nullptr;
  }
}

std::string Where(const LinePiece& piece) {
  return (piece.operand ? "TEXT " : "line ") + std::to_string(piece.line) +
         (piece.operand ? "" : " of standard input");
}

void ForEachLine(const std::vector<std::string>& operands,
                 const PieceFeed& feed) {
  if (!operands.empty()) {
    unsigned long number = 1;
    for (std::string text : operands) {  // a copy: the feed gets char*
      Deliver(feed, {&text[0], text.size(), true, number++, 0, true});
    }
    return;
  }
  if (isatty(STDIN_FILENO)) {
    std::fputs(
        "vesktext: reading lines from standard input; end them "
        "with Ctrl-D\n",
        stderr);
  }
  InputLines(feed).Run();
}

void Write(const char* bytes, std::size_t n) {
  if (n != 0) std::fwrite(bytes, 1, n, stdout);
}

void EndLine(bool lineEnd) {
  if (lineEnd) std::fputc('\n', stdout);
}

void PrintLine(const VeskString& text) {
  Write(text.Text(), static_cast<std::size_t>(text.Length()));
  EndLine(true);
}

}  // namespace vesktext
