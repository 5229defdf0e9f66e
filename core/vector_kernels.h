// The kernels of kernels.h over the lanes of one instruction set, included
// once into each vector form's namespace after its `Lanes` (a block type V
// of kWidth bytes with Load, Splat, Or, And, AndNot, Xor, Add, Equal, Less
// on signed bytes, and Mask, whose bit i is the top bit of byte i), its
// `NarrowerKernels` and VESK_KERNEL, the attributes its functions need.
// No include guard: each form includes it once.
struct Kernels {
  using L = Lanes;
  using V = L::V;
  static constexpr std::size_t kWidth = L::kWidth;
  static constexpr std::uint32_t kAll = kWidth == 32 ? ~0u : (1u << kWidth) - 1;
  using Narrower = NarrowerKernels;

  // Lanes that lie in [low, low + count), count at most 128: the range is
  // moved to start at -128, so that one signed compare tests it.
  VESK_KERNEL static V InRange(V bytes, unsigned char low, int count) {
    const V moved =
        L::Add(bytes, L::Splat(static_cast<unsigned char>(0x80 - low)));
    return L::Less(moved, L::Splat(static_cast<unsigned char>(count - 128)));
  }

  // FoldByte on each lane: 'A' to 'Z' gain 0x20.
  VESK_KERNEL static V Fold(V bytes) {
    return L::Or(bytes, L::And(InRange(bytes, 'A', 26), L::Splat(0x20)));
  }

  VESK_KERNEL static V Is(V bytes, unsigned char byte) {
    return L::Equal(bytes, L::Splat(byte));
  }

  VESK_KERNEL static V LettersAndDigits(V bytes) {
    return L::Or(InRange(L::Or(bytes, L::Splat(0x20)), 'a', 26),
                 InRange(bytes, '0', 10));
  }

  // Two bytes fold alike when they are equal, or differ in the case bit
  // alone and the first is a letter (and so is the second): one letter
  // test where folding both blocks would take two.
  template <bool kFold>
  VESK_KERNEL static std::uint32_t Differ(const char* a, const char* b) {
    const V x = L::Load(a), y = L::Load(b);
    if (!kFold) return L::Mask(L::Equal(x, y)) ^ kAll;
    const V letter = InRange(L::Or(x, L::Splat(0x20)), 'a', 26);
    const V caseBit = L::And(letter, L::Splat(0x20));
    const V rest = L::AndNot(caseBit, L::Xor(x, y));
    return L::Mask(L::Equal(rest, L::Splat(0))) ^ kAll;
  }

  template <bool kFold>
  VESK_KERNEL static std::uint32_t Candidates(const char* block,
                                              std::size_t span,
                                              unsigned char first,
                                              unsigned char last) {
    V head = L::Load(block), tail = L::Load(block + span);
    if (kFold) {
      head = Fold(head);
      tail = Fold(tail);
    }
    return L::Mask(L::And(L::Equal(head, L::Splat(first)),
                          L::Equal(tail, L::Splat(last))));
  }

  template <ByteSet kSet>
  VESK_KERNEL static std::uint32_t Kept(const unsigned char* p) {
    const V bytes = L::Load(p);
    switch (kSet) {
      case ByteSet::kLettersAndDigits: return L::Mask(LettersAndDigits(bytes));
      case ByteSet::kStrict:
        return L::Mask(L::Or(LettersAndDigits(bytes),
                             L::Or(Is(bytes, '-'), Is(bytes, '.'))));
      case ByteSet::kUrl: {
        // The printable bytes, 0x21 to 0x7E, but < > \ ^ ` { | }. '<' and
        // '>', like '\' and '^', differ in bit 1 alone, so one compare
        // tests each pair.
        const V pairs = L::Or(bytes, L::Splat(0x02));
        const V leftOut = L::Or(L::Or(Is(pairs, '>'), Is(pairs, '^')),
                                L::Or(Is(bytes, '`'), InRange(bytes, '{', 3)));
        return L::Mask(
            L::AndNot(leftOut, InRange(bytes, 0x21, 0x7E - 0x21 + 1)));
      }
      case ByteSet::kAscii: return L::Mask(bytes) ^ kAll;
      case ByteSet::kAll: break;
    }
    return kAll;
  }
};
