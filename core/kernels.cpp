// The choice of the kernels' form, made once per process.
#include "kernels.h"

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

Form WidestForm() {
  Form widest = Form::kScalar;
  for (int i = 0; i <= static_cast<int>(Form::kNeon); ++i) {
    if (FormRuns(static_cast<Form>(i))) widest = static_cast<Form>(i);
  }
  return widest;
}

bool ForceForm(const char* name) {
  for (int i = 0; i <= static_cast<int>(Form::kNeon); ++i) {
    const auto form = static_cast<Form>(i);
    if (std::strcmp(name, FormName(form)) == 0 && FormRuns(form)) {
      g_form = form;
      return true;
    }
  }
  return false;
}

}  // namespace vesk
