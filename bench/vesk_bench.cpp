// Each module operation beside the peers a C++ developer would reach for,
// on the same inputs in the same run, so every figure reads as a ratio.
// Benchmarks are named Operation/input/implementation.
#include <absl/strings/str_cat.h>
#include <benchmark/benchmark.h>
#include <curl/curl.h>
#include <fmt/format.h>
#include <strings.h>

#include <boost/url/encode.hpp>
#include <boost/url/grammar/lut_chars.hpp>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "core/kernels.h"
#include "core/veskstring.h"
#include "host/memory_manager.h"
#include "host/text_services.h"

namespace {

using benchmark::DoNotOptimize;
using benchmark::State;

// Hides a pointer's value from the optimiser, so that a call the compiler
// knows to be pure (strstr, strcasecmp, ...) is not hoisted out of the loop.
template <class T>
T* Opaque(T* pointer) {
  T* volatile hidden = pointer;
  return hidden;
}

// ---- Inputs ----------------------------------------------------------------

std::mt19937& Random() {
  static std::mt19937 random(20261122);
  return random;
}

// `length` bytes drawn from `alphabet`.
std::string Draw(const std::string& alphabet, size_t length) {
  std::uniform_int_distribution<size_t> pick(0, alphabet.size() - 1);
  std::string text(length, ' ');
  for (char& c : text) c = alphabet[pick(Random())];
  return text;
}

const std::string kAlnum =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";

std::string QueryAlphabet() { return kAlnum + kAlnum + "  -_.~/=&?%+"; }

std::string HighAlphabet() {
  std::string alphabet = kAlnum;
  for (int b = 0x80; b < 0x100; ++b) alphabet += static_cast<char>(b);
  return alphabet;
}

// Shift_JIS text: kana and kanji pairs among ASCII words.
std::string ShiftJis(size_t length) {
  static const char* kPieces[] = {"\x93\xFA", "\x96\x7B", "\x82\xA0",
                                  "\x83\x5C", "abc ",     "id=7&"};
  std::string text;
  std::uniform_int_distribution<size_t> pick(0, 5);
  while (text.size() < length) text += kPieces[pick(Random())];
  return text;
}

struct Input {
  std::string name;
  std::string text;
};

// The encoders' inputs, named for what they are.
const std::vector<Input>& EncoderInputs() {
  static const std::vector<Input> inputs = {
      {"query_8_32", Draw(QueryAlphabet(), 20)},
      {"query_4KiB", Draw(QueryAlphabet(), 4096)},
      {"query_1MiB", Draw(QueryAlphabet(), 1 << 20)},
      {"alnum_4KiB", Draw(kAlnum, 4096)},
      {"alnum_1MiB", Draw(kAlnum, 1 << 20)},
      {"spaces_4KiB", Draw("ab  c  ", 4096)},
      {"high_4KiB", Draw(HighAlphabet(), 4096)},
      {"shift_jis_4KiB", ShiftJis(4096)},
  };
  return inputs;
}

// Short query values, 8 to 32 bytes each, for the appends.
const std::vector<std::string>& Pieces() {
  static const std::vector<std::string> pieces = [] {
    std::vector<std::string> all;
    std::uniform_int_distribution<size_t> length(8, 64);
    for (int i = 0; i < 256; ++i)
      all.push_back(Draw(QueryAlphabet(), length(Random())));
    return all;
  }();
  return pieces;
}

const std::vector<long>& Numbers() {
  static const std::vector<long> numbers = [] {
    std::vector<long> all;
    std::uniform_int_distribution<int> digits(1, 18);
    for (int i = 0; i < 1024; ++i) {
      long value = 1;
      for (int d = digits(Random()); d > 0; --d) value *= 10;
      all.push_back((i % 2 == 0 ? 1 : -1) * (value + i));
    }
    return all;
  }();
  return numbers;
}

const std::vector<std::string>& NumberTexts() {
  static const std::vector<std::string> texts = [] {
    std::vector<std::string> all;
    for (long n : Numbers()) all.push_back(std::to_string(n));
    return all;
  }();
  return texts;
}

// std::from_chars into a T over every text: the peer of the readers.
template <class T>
void FromChars(State& state, const std::vector<std::string>& texts) {
  for (auto _ : state) {
    for (const std::string& t : texts) {
      T value = 0;
      std::from_chars(t.data(), t.data() + t.size(), value);
      DoNotOptimize(value);
    }
  }
}

// ---- Registration ----------------------------------------------------------

void Add(const std::string& name, std::function<void(State&)> body,
         int64_t bytes = 0) {
  benchmark::RegisterBenchmark(name.c_str(), [body, bytes](State& state) {
    body(state);
    if (bytes > 0) state.SetBytesProcessed(state.iterations() * bytes);
  });
}

// ---- Appending -------------------------------------------------------------

// Where a growing string's blocks land in the C heap moves an append loop's
// time by up to a fifth, and a loop repeated in one heap state lands them in
// the same places every time: one run's figure would stand for one layout
// only. Each append row therefore changes the heap's state every 16
// iterations by holding a block of one of 64 sizes, so that its figure is an
// average over many layouts, taken the same way for the module and its peers.
class HeapLayouts {
 public:
  HeapLayouts() = default;
  HeapLayouts(const HeapLayouts&) = delete;
  HeapLayouts& operator=(const HeapLayouts&) = delete;
  ~HeapLayouts() { std::free(m_held); }

  void Next() {
    if (++m_iteration % 16 != 0) return;
    std::free(m_held);
    m_held = std::malloc(16 * (m_iteration / 16 % 64));
    DoNotOptimize(m_held);
  }

 private:
  unsigned long m_iteration = 0;
  void* m_held = nullptr;
};

// Registers a row whose every iteration builds one string from empty.
template <class Build>
void AddGrowing(const std::string& name, Build build) {
  Add(name, [build](State& state) {
    HeapLayouts layouts;
    for (auto _ : state) {
      layouts.Next();
      build();
    }
  });
}

void AddAppends() {
  constexpr int kChars = 4096;
  AddGrowing("AppendChar/4KiB/vesk", [] {
    VeskString s;
    for (int i = 0; i < kChars; ++i)
      s.AppendChar(static_cast<char>('a' + (i & 15)));
    DoNotOptimize(s.Text());
  });
  AddGrowing("AppendChar/4KiB/std_push_back", [] {
    std::string s;
    for (int i = 0; i < kChars; ++i)
      s.push_back(static_cast<char>('a' + (i & 15)));
    DoNotOptimize(s.data());
  });
  AddGrowing("AppendString/pieces_8_64/vesk", [] {
    VeskString s;
    for (const std::string& piece : Pieces()) s.AppendString(piece.c_str());
    DoNotOptimize(s.Text());
  });
  AddGrowing("AppendString/pieces_8_64/std_append", [] {
    std::string s;
    for (const std::string& piece : Pieces()) s.append(piece.c_str());
    DoNotOptimize(s.data());
  });
  AddGrowing("AppendString/pieces_8_64/absl_StrAppend", [] {
    std::string s;
    for (const std::string& piece : Pieces())
      absl::StrAppend(&s, piece.c_str());
    DoNotOptimize(s.data());
  });
}

// ---- Numbers ---------------------------------------------------------------

void AddNumberText() {
  for (int radix : {10, 16}) {
    const std::string tag = "AppendInt/radix" + std::to_string(radix) + "/";
    Add(tag + "vesk", [radix](State& state) {
      VeskString s(32 * 1024);
      for (auto _ : state) {
        s.Truncate(0);
        for (long n : Numbers()) s.AppendInt(n, radix);
        DoNotOptimize(s.Text());
      }
    });
    Add(tag + "std_to_chars", [radix](State& state) {
      std::string s;
      s.reserve(32 * 1024);
      for (auto _ : state) {
        s.clear();
        for (long n : Numbers()) {
          char digits[72];
          s.append(digits,
                   std::to_chars(digits, digits + sizeof digits, n, radix).ptr);
        }
        DoNotOptimize(s.data());
      }
    });
  }
  Add("AppendInt/radix10/fmt_format_int", [](State& state) {
    std::string s;
    s.reserve(32 * 1024);
    for (auto _ : state) {
      s.clear();
      for (long n : Numbers()) {
        const fmt::format_int text(n);
        s.append(text.data(), text.size());
      }
      DoNotOptimize(s.data());
    }
  });
  Add("U64ToChar/mixed/vesk", [](State& state) {
    for (auto _ : state) {
      for (long n : Numbers()) {
        char* text = U64ToChar(static_cast<unsigned long long>(n));
        DoNotOptimize(text);
        Pelgc::SystemDelete(text);
      }
    }
  });
  Add("U64ToChar/mixed/std_to_chars_new", [](State& state) {
    for (auto _ : state) {
      for (long n : Numbers()) {
        char* text = new char[21];
        *std::to_chars(text, text + 20, static_cast<unsigned long long>(n))
             .ptr = '\0';
        DoNotOptimize(text);
        delete[] text;
      }
    }
  });
  const auto& texts = NumberTexts();
  Add("ToInt64/mixed/vesk", [&texts](State& state) {
    for (auto _ : state)
      for (const std::string& t : texts) DoNotOptimize(ToInt64(t.c_str()));
  });
  Add("ToInt64/mixed/std_from_chars",
      [&texts](State& state) { FromChars<long long>(state, texts); });
  Add("ToInt64/mixed/strtoll", [&texts](State& state) {
    for (auto _ : state)
      for (const std::string& t : texts)
        DoNotOptimize(std::strtoll(Opaque(t.c_str()), nullptr, 10));
  });
  Add("ToUInt64/mixed/vesk", [&texts](State& state) {
    for (auto _ : state)
      for (const std::string& t : texts) DoNotOptimize(ToUInt64(t.c_str()));
  });
  Add("ToUInt64/mixed/std_from_chars",
      [&texts](State& state) { FromChars<unsigned long long>(state, texts); });
  Add("ToInt/mixed/vesk", [&texts](State& state) {
    for (auto _ : state)
      for (const std::string& t : texts) DoNotOptimize(ToInt(t.c_str()));
  });
  Add("ToInt/mixed/std_from_chars",
      [&texts](State& state) { FromChars<int>(state, texts); });
}

// ---- Percent-encoding ------------------------------------------------------

CURL* Curl() {
  static CURL* curl = curl_easy_init();
  return curl;
}

// Boost.URL given exactly the module's kept sets.
const boost::urls::grammar::lut_chars kFormKept(
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789");
const boost::urls::grammar::lut_chars kUrlKept(
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"
    "!\"#$%&'()*+,-./:;=?@[]_~");

// What CreateEncodedUrl must do on a short text however fast it is: the
// work string's first growth (257 bytes), a character width for each byte,
// the result written into the work buffer (here by one memcpy of it), the
// exact copy, and the releases. Not a peer: the floor under the module.
void AddRequiredCalls(const std::string& op, const std::string& text,
                      int64_t bytes) {
  VeskString source(text.c_str());
  char* encoded = source.CreateEncodedUrl();
  const std::string result = encoded;
  Pelgc::SystemDelete(encoded);
  Add(
      op + "floor_required_calls",
      [&text, result](State& state) {
        const unsigned long copySize = result.size() + 1;
        for (auto _ : state) {
          auto* work =
              static_cast<char*>(Pelgc::SystemNew(257, Pelgc::kMayReturnNull));
          for (char c : text)
            DoNotOptimize(PlayerBytesInChar(static_cast<unsigned char>(c)));
          std::memcpy(work, result.c_str(), copySize);
          DoNotOptimize(work);
          void* copy = Pelgc::SystemNew(copySize, Pelgc::kMayReturnNull);
          std::memcpy(copy, work, copySize);
          Pelgc::SystemDelete(work);
          DoNotOptimize(copy);
          Pelgc::SystemDelete(copy);
        }
      },
      bytes);
}

void AddEncoders() {
  for (const Input& input : EncoderInputs()) {
    const std::string& text = input.text;
    const auto bytes = static_cast<int64_t>(text.size());
    const bool shiftJis = input.name.rfind("shift_jis", 0) == 0;
    const std::string form = "EncodeString/" + input.name + "/";
    Add(
        form + "vesk",
        [&text](State& state) {
          VeskString s;
          for (auto _ : state) {
            s.Truncate(0);
            s.EncodeString(text.c_str(), 5, true, false);
            DoNotOptimize(s.Text());
          }
        },
        bytes);
    Add(
        form + "boost_url",
        [&text](State& state) {
          boost::urls::encoding_opts opts;
          opts.space_as_plus = true;
          for (auto _ : state)
            DoNotOptimize(boost::urls::encode(text, kFormKept, opts));
        },
        bytes);
    const std::string url = "CreateEncodedUrl/" + input.name + "/";
    Add(
        url + "vesk",
        [&text, shiftJis](State& state) {
          const char* page = shiftJis ? "shift_jis" : "windows-1252";
          SetHostCodePage(page);
          VeskString s(text.c_str());
          for (auto _ : state) {
            char* copy = s.CreateEncodedUrl();
            DoNotOptimize(copy);
            Pelgc::SystemDelete(copy);
          }
          SetHostCodePage("windows-1252");
        },
        bytes);
    Add(
        url + "boost_url",
        [&text](State& state) {
          for (auto _ : state)
            DoNotOptimize(boost::urls::encode(text, kUrlKept));
        },
        bytes);
    if (input.name == "query_8_32") AddRequiredCalls(url, text, bytes);
    Add(
        "EscapedCStr/" + input.name + "/vesk",
        [&text](State& state) {
          VeskString s(text.c_str());
          for (auto _ : state) {
            char* copy = s.CreateEscapedCStr(true);
            DoNotOptimize(copy);
            Pelgc::SystemDelete(copy);
          }
        },
        bytes);
    for (const std::string& op :
         {form, url, "EscapedCStr/" + input.name + "/"}) {
      Add(
          op + "curl_easy_escape",
          [&text](State& state) {
            for (auto _ : state) {
              char* copy = curl_easy_escape(Curl(), text.data(),
                                            static_cast<int>(text.size()));
              DoNotOptimize(copy);
              curl_free(copy);
            }
          },
          bytes);
      Add(
          op + "memcpy",
          [&text](State& state) {
            std::vector<char> out(text.size() + 1);
            for (auto _ : state) {
              std::memcpy(out.data(), text.data(), text.size());
              DoNotOptimize(out.data());
              benchmark::ClobberMemory();
            }
          },
          bytes);
    }
  }
}

// ---- Comparison and search -------------------------------------------------

struct SearchCase {
  std::string name;
  std::string haystack;
  std::string needle;
};

const std::vector<SearchCase>& SearchCases() {
  static const std::vector<SearchCase> cases = {
      {"url",
       "https://media.example.com/content/player/v2/movies/intro.swf"
       "?session=84d1ae79&quality=high&lang=en&search=Mixed+Case",
       "search="},
      {"url_miss",
       "https://media.example.com/content/player/v2/movies/intro"
       ".swf?session=84d1ae79&quality=high&lang=en",
       "search="},
      {"adversarial_1MiB", std::string(1 << 20, 'a'),
       std::string(1000, 'a') + "b"},
  };
  return cases;
}

// The default host's conversion to the code page: 1 MiB of characters
// the page lacks, each of which becomes '?', beside 1 MiB of characters it
// holds. Not a peer: the same call on other text, so that the ratio says
// how much slower a character the page lacks is.
void AddConversions() {
  struct Case {
    const char* page;
    const char* lacking;
    const char* held;
  };
  static const Case kCases[] = {{"windows-1252", "\u3042", "\u00e9"},
                                {"shift_jis", "\u00e9", "\u3042"}};
  for (const Case& c : kCases) {
    const auto convert = [page = c.page](const char* character) {
      std::string text;
      while (text.size() + std::strlen(character) <= (1u << 20)) {
        text += character;
      }
      return [page, text](State& state) {
        SetHostCodePage(page);
        for (auto _ : state) {
          char* converted = CreateMBCSFromUTF8(text.c_str(), true);
          DoNotOptimize(converted);
          Pelgc::SystemDelete(converted);
        }
        SetHostCodePage(HostCodePageAt(0)->name);
      };
    };
    const std::string name =
        std::string("CreateMBCSFromUTF8/") + c.page + "_1MiB/";
    Add(name + "vesk", convert(c.lacking), 1 << 20);
    Add(name + "held_characters", convert(c.held), 1 << 20);
  }
}

void AddSearches() {
  for (const SearchCase& c : SearchCases()) {
    const char* hay = c.haystack.c_str();
    const char* needle = c.needle.c_str();
    const std::string str = "VeskStrStr/" + c.name + "/";
    Add(str + "vesk", [hay, needle](State& state) {
      for (auto _ : state) DoNotOptimize(VeskStrStr(Opaque(hay), needle));
    });
    Add(str + "glibc_strstr", [hay, needle](State& state) {
      for (auto _ : state) DoNotOptimize(std::strstr(Opaque(hay), needle));
    });
    const std::string_view needleView(c.needle);
    const size_t size = c.haystack.size();
    Add(str + "string_view_find", [hay, size, needleView](State& state) {
      for (auto _ : state) {
        DoNotOptimize(std::string_view(Opaque(hay), size).find(needleView));
      }
    });
    // Not a peer: the two length scans that reading nothing past either
    // terminator requires before any block of the haystack is loaded.
    Add(str + "floor_length_scans", [hay, needle](State& state) {
      for (auto _ : state) {
        DoNotOptimize(std::strlen(Opaque(needle)));
        DoNotOptimize(std::memchr(Opaque(hay), 0, 256));
      }
    });
    const std::string icase = "VeskStrCaseStr/" + c.name + "/";
    Add(icase + "vesk", [hay, needle](State& state) {
      for (auto _ : state) DoNotOptimize(VeskStrCaseStr(Opaque(hay), needle));
    });
    Add(icase + "glibc_strcasestr", [hay, needle](State& state) {
      for (auto _ : state) DoNotOptimize(strcasestr(Opaque(hay), needle));
    });
  }
  static const std::string a = SearchCases()[0].haystack;
  static std::string b = [] {
    std::string upper = a;
    for (char& ch : upper)
      ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
    return upper;
  }();
  Add("VeskStrICmp/url/vesk", [](State& state) {
    for (auto _ : state)
      DoNotOptimize(VeskStrICmp(Opaque(a.c_str()), Opaque(b.c_str())));
  });
  Add("VeskStrICmp/url/glibc_strcasecmp", [](State& state) {
    for (auto _ : state)
      DoNotOptimize(strcasecmp(Opaque(a.c_str()), Opaque(b.c_str())));
  });
  // Not a peer: both texts measured before any block of them is loaded.
  Add("VeskStrICmp/url/floor_length_scans", [](State& state) {
    for (auto _ : state) {
      DoNotOptimize(std::memchr(Opaque(a.c_str()), 0, 128));
      DoNotOptimize(std::memchr(Opaque(b.c_str()), 0, a.size()));
    }
  });
  // Not a peer: the same scans, then a plain memcmp of the whole text,
  // which folds nothing: a stand-in for the least a compare after them costs.
  static const std::string a_copy = a;
  Add("VeskStrICmp/url/floor_scans_and_memcmp", [](State& state) {
    for (auto _ : state) {
      DoNotOptimize(std::memchr(Opaque(a.c_str()), 0, 128));
      DoNotOptimize(std::memchr(Opaque(b.c_str()), 0, a.size()));
      DoNotOptimize(
          std::memcmp(Opaque(a.c_str()), Opaque(a_copy.c_str()), a.size()));
    }
  });
  Add("VeskStrNICmp/url/vesk", [](State& state) {
    for (auto _ : state)
      DoNotOptimize(VeskStrNICmp(Opaque(a.c_str()), Opaque(b.c_str()), 64));
  });
  Add("VeskStrNICmp/url/glibc_strncasecmp", [](State& state) {
    for (auto _ : state)
      DoNotOptimize(strncasecmp(Opaque(a.c_str()), Opaque(b.c_str()), 64));
  });
  Add("VeskStrChr/url/vesk", [](State& state) {
    for (auto _ : state) DoNotOptimize(VeskStrChr(Opaque(a.c_str()), '&'));
  });
  Add("VeskStrChr/url/glibc_strchr", [](State& state) {
    for (auto _ : state) DoNotOptimize(std::strchr(Opaque(a.c_str()), '&'));
  });
  Add("VeskStrRChr/url/vesk", [](State& state) {
    for (auto _ : state) DoNotOptimize(VeskStrRChr(Opaque(a.c_str()), '/'));
  });
  Add("VeskStrRChr/url/glibc_strrchr", [](State& state) {
    for (auto _ : state) DoNotOptimize(std::strrchr(Opaque(a.c_str()), '/'));
  });
}

}  // namespace

int main(int argc, char** argv) {
  Pelgc::KeepLargeBlocksInHeap();  // as the tool does
  if (!vesk::ForceFormFromEnvironment()) {
    std::fprintf(
        stderr,
        "vesk_bench: VESK_KERNELS names a form this machine does not run\n");
    return 2;
  }
  AddAppends();
  AddNumberText();
  AddEncoders();
  AddSearches();
  AddConversions();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  curl_easy_cleanup(Curl());
  return 0;
}
