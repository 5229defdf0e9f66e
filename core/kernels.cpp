// The choice of the kernels' form, made once per process.
#include "kernels.h"

#include <cstdlib>
#include <cstring>
#include <initializer_list>

namespace vesk {

const char* FormName(Form form) {
  static const char* const kNames[] = {"scalar", "sse2", "avx2", "neon"};
  return kNames[static_cast<int>(form)];
}

bool FormRuns(Form form) {
  switch (form) {
    case Form::kSse2: return VESK_WITH_SSE2 != 0;
    case Form::kAvx2:
#if VESK_WITH_AVX2
      __builtin_cpu_init();
      return __builtin_cpu_supports("avx2") != 0;
#else
      return false;
#endif
    case Form::kNeon: return VESK_WITH_NEON != 0;
    case Form::kScalar: break;
  }
  return true;
}

// The form VESK_KERNELS names, or null when it is unset or empty.
const char* ForcedForm() {
  const char* forced = std::getenv("VESK_KERNELS");
  return forced != nullptr && forced[0] != '\0' ? forced : nullptr;
}

Form ChooseForm() {
  const char* forced = ForcedForm();
  Form widest = Form::kScalar;
  for (const Form form :
       {Form::kScalar, Form::kSse2, Form::kAvx2, Form::kNeon}) {
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
