// The choice of the kernels' form, made once per process.
#include "kernels.h"

#include <cstdlib>
#include <cstring>

namespace vesk {

const char* FormName(Form form) {
  static const char* const kNames[] = {"scalar", "sse2", "avx2", "neon"};
  return kNames[static_cast<int>(form)];
}

bool FormRuns(Form form) {
  switch (form) {
    case Form::kScalar:
#if VESK_WITH_SSE2
    case Form::kSse2:
#endif
#if VESK_WITH_NEON
    case Form::kNeon:
#endif
      return true;
#if VESK_WITH_AVX2
    case Form::kAvx2:
      __builtin_cpu_init();
      return __builtin_cpu_supports("avx2") != 0;
#endif
    default: return false;
  }
}

// The form VESK_KERNELS names; null when it is unset or empty.
const char* ForcedForm() {
  const char* forced = std::getenv("VESK_KERNELS");
  return forced != nullptr && forced[0] != '\0' ? forced : nullptr;
}

Form ChooseForm() {
  const char* forced = ForcedForm();
  Form widest = Form::kScalar;
  for (int i = 0; i <= static_cast<int>(Form::kNeon); ++i) {
    const auto form = static_cast<Form>(i);
    if (!FormRuns(form)) continue;
    if (forced != nullptr && std::strcmp(forced, FormName(form)) == 0) {
      return form;
    }
    widest = form;
  }
  return widest;
}

bool ForcedFormRuns() {
  const char* forced = ForcedForm();
  return forced == nullptr || std::strcmp(forced, FormName(g_form)) == 0;
}

}  // namespace vesk
