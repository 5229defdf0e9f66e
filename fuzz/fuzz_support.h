// Shared pieces of the fuzz targets: checks that abort with a message (a
// crash to libFuzzer, a failure to the replay), a step run on the module and
// on the model under the same heap fault with their requests compared, and
// the model's host bound to the default host.
#ifndef VESK_FUZZ_FUZZ_SUPPORT_H
#define VESK_FUZZ_FUZZ_SUPPORT_H

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "core/veskstring.h"
#include "fuzz/model/model.h"
#include "host/memory_manager.h"
#include "host/text_services.h"

namespace vesk_fuzz {

[[noreturn]] inline void Fail(const char* what, const char* file, int line) {
  std::fprintf(stderr, "%s:%d: check failed: %s\n", file, line, what);
  std::abort();
}
#define VESK_CHECK(condition) \
  ((condition) ? void() : vesk_fuzz::Fail(#condition, __FILE__, __LINE__))

constexpr const char* kCodePages[] = {"windows-1252", "shift_jis", "gbk",
                                      "big5",         "euc-kr",    "utf-8"};

inline void PickCodePage(FuzzedDataProvider& in) {
  SetHostCodePage(in.PickValueInArray(kCodePages));
}

// Heap requests seen by the default host while a Recording lives.
inline std::vector<model::Request>& Log() {
  static std::vector<model::Request> log;
  return log;
}
class Recording {
 public:
  Recording() {
    Log().clear();
    Pelgc::SetRequestObserver([](unsigned long size,
                                 Pelgc::FixedMallocOpts opts) {
      Log().push_back({size, opts});
    });
  }
  ~Recording() { Pelgc::SetRequestObserver(nullptr); }
  Recording(const Recording&) = delete;
  Recording& operator=(const Recording&) = delete;
};

// A host call's text and the requests it made; the text is released.
template <class Call>
model::HostText Given(Call call) {
  Recording recording;
  char* text = call();
  model::HostText given{text == nullptr, text != nullptr ? text : "", Log()};
  Pelgc::SystemDelete(text);
  return given;
}

inline void BindModelHost() {
  model::Host& host = model::TheHost();
  host.doubleText = [](double value) {
    return Given([value] { return ConvertDoubleToString(value); });
  };
  host.codePage = [](const char* text) {
    return Given([text] { return CreateMBCSFromUTF8(text, true); });
  };
  host.bytesInChar = PlayerBytesInChar;
}

// A heap fault for one step: request `skip` + 1 fails.
struct Fault {
  bool armed = false;
  unsigned long skip = 0;
  bool throws = false;
  bool persistent = false;
};

inline Fault ConsumeFault(FuzzedDataProvider& in) {
  if (in.ConsumeIntegral<unsigned char>() < 192) return {};
  const auto plan = in.ConsumeIntegral<unsigned char>();
  return {true, plan & 15u, (plan & 16) != 0, (plan & 32) != 0};
}

enum class Outcome { kDone, kBadAlloc, kTooLarge, kAborted };

// Runs `call` and names how it ended; `TooLarge` and `Aborted` are the
// reports of the module's host or of the model.
template <class TooLarge, class Aborted, class Call>
Outcome Run(Call call) {
  try {
    call();
  } catch (const std::bad_alloc&) {
    return Outcome::kBadAlloc;
  } catch (const TooLarge&) {
    return Outcome::kTooLarge;
  } catch (const Aborted&) {
    return Outcome::kAborted;
  }
  return Outcome::kDone;
}

template <class Call>
Outcome RunModule(Call call) {
  return Run<Pelgc::ObjectTooLargeError, Pelgc::HeapAbortError>(call);
}

template <class Call>
Outcome RunModel(Call call) {
  return Run<model::TooLarge, model::Aborted>(call);
}

// Runs `module` under `fault`, then `reference` on the model under the same
// plan, and checks that both ended alike after the same heap requests.
template <class Module, class Reference>
Outcome Step(const Fault& fault, Module module, Reference reference) {
  Outcome got;
  std::vector<model::Request> requests;
  {
    Recording recording;
    if (fault.armed) {
      Pelgc::InjectHeapFault(fault.skip,
                             fault.throws ? Pelgc::HeapFault::kThrowBadAlloc
                                          : Pelgc::HeapFault::kReturnNull,
                             fault.persistent);
    }
    got = RunModule(module);
    Pelgc::ClearHeapFault();
    requests = Log();
  }
  model::Heap& heap = model::TheHeap();
  heap = model::Heap{{}, fault.armed, fault.skip, fault.throws,
                     fault.persistent};
  const Outcome want = RunModel(reference);
  heap.armed = false;
  VESK_CHECK(got == want);
  VESK_CHECK(requests == heap.log);
  return got;
}

// Checks a heap text against the model's and releases it. Its block is as
// large as the model's text, since the requests of its step matched.
inline void ExpectSame(char* text, const model::HeapText& want) {
  VESK_CHECK((text == nullptr) == want.null);
  if (text != nullptr) {
    VESK_CHECK(std::memcmp(text, want.text.data(), want.text.size() + 1) == 0);
    Pelgc::SystemDelete(text);
  }
}

// Checks that an input left no block live.
class LiveBlocksBalance {
 public:
  LiveBlocksBalance() : m_live(Pelgc::GetHeapStats().live) {}
  ~LiveBlocksBalance() { VESK_CHECK(Pelgc::GetHeapStats().live == m_live); }
  LiveBlocksBalance(const LiveBlocksBalance&) = delete;
  LiveBlocksBalance& operator=(const LiveBlocksBalance&) = delete;

 private:
  unsigned long m_live;
};

}  // namespace vesk_fuzz

#endif  // VESK_FUZZ_FUZZ_SUPPORT_H
