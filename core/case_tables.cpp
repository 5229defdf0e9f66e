// The case tables: the XOR that folds each byte. Only ASCII letters carry a
// non-zero entry (0x20), so bytes from 0x80 up never change.
#include "veskstring.h"

#define VESK_ZEROS_16 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0
#define VESK_ZEROS_64 VESK_ZEROS_16, VESK_ZEROS_16, VESK_ZEROS_16, VESK_ZEROS_16
#define VESK_X 0x20
// 0x?1 to 0x?F and 0x?0 to 0x?A: the two rows that hold 26 letters.
#define VESK_LETTER_ROWS                                                       \
  0, VESK_X, VESK_X, VESK_X, VESK_X, VESK_X, VESK_X, VESK_X, VESK_X, VESK_X,   \
      VESK_X, VESK_X, VESK_X, VESK_X, VESK_X, VESK_X, VESK_X, VESK_X, VESK_X,  \
      VESK_X, VESK_X, VESK_X, VESK_X, VESK_X, VESK_X, VESK_X, VESK_X, 0, 0, 0, \
      0, 0

// 'A' (0x41) to 'Z' (0x5A).
extern const unsigned char g_tolower_map[256] = {
    VESK_ZEROS_64, VESK_LETTER_ROWS, VESK_ZEROS_16,
    VESK_ZEROS_16, VESK_ZEROS_64,    VESK_ZEROS_64};

// 'a' (0x61) to 'z' (0x7A).
extern const unsigned char g_toupper_map[256] = {
    VESK_ZEROS_64,    VESK_ZEROS_16, VESK_ZEROS_16,
    VESK_LETTER_ROWS, VESK_ZEROS_64, VESK_ZEROS_64};

#undef VESK_LETTER_ROWS
#undef VESK_X
#undef VESK_ZEROS_64
#undef VESK_ZEROS_16
