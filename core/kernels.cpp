// The choice of the kernels' form, made once per process.
#include "kernels.h"

#include <cstdlib>
#include <cstring>

namespace vesk {

const char* FormName(Form form) {
  switch (form) {
    case Form::kSse2: return "sse2";
    case Form::kAvx2: return "avx2";
    case Form::kNeon: return "neon";
    case Form::kScalar: break;
  }
  return "scalar";
}

Form ChooseForm() {
  Form widest = Form::kScalar;
#if VESK_WITH_SSE2
  widest = Form::kSse2;
#endif
#if VESK_WITH_AVX2
  __builtin_cpu_init();
  if (__builtin_cpu_supports("avx2")) widest = Form::kAvx2;
#endif
#if VESK_WITH_NEON
  widest = Form::kNeon;
#endif
  // A narrower x86-64 form than the widest runs wherever the widest does;
  // NEON and the x86-64 forms exclude each other.
  const char* forced = std::getenv("VESK_KERNELS");
  if (forced == nullptr) return widest;
  for (int form = 0; form <= static_cast<int>(widest); ++form) {
    if (std::strcmp(forced, FormName(static_cast<Form>(form))) == 0 &&
        (form == 0 || form == static_cast<int>(widest) ||
         widest != Form::kNeon)) {
      return static_cast<Form>(form);
    }
  }
  return widest;
}

}  // namespace vesk
