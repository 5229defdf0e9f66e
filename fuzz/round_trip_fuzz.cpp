// Round trips: percent-decoding what each encoder wrote gives back what it
// was given, wherever its rule makes the output unambiguous: always for the
// form encoding and the strict escaped copy, which escape '%' (and '+');
// for the encoders that keep '%', when the text holds none.
#include "fuzz/fuzz_support.h"

namespace {

std::string Bytes(const VeskString& s) {
  return s.Text() != nullptr ? std::string(s.Text(), s.Length()) : "";
}

std::string Take(char* text) {
  VESK_CHECK(text != nullptr);
  std::string bytes = text;
  Pelgc::SystemDelete(text);
  return bytes;
}

// The text that an encoder of `version` escapes: converted to the code page
// when asked and the host can, else as it is.
std::string Source(const std::string& text, bool convert) {
  char* converted = convert ? CreateMBCSFromUTF8(text.c_str(), true) : nullptr;
  return converted != nullptr ? Take(converted) : text;
}

bool IsFormEncoded(const std::string& out, bool plus) {
  for (std::size_t i = 0; i < out.size(); ++i) {
    const char c = out[i];
    if (c == '%') {
      for (std::size_t j = i + 1; j <= i + 2; ++j) {
        const bool digit = j < out.size() &&
                           ((out[j] >= '0' && out[j] <= '9') ||
                            (out[j] >= 'A' && out[j] <= 'F'));
        if (!digit) return false;
      }
      i += 2;
    } else if (!model::IsAlnum(static_cast<unsigned char>(c)) &&
               !(plus && c == '+')) {
      return false;
    }
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data,
                                      std::size_t size) {
  FuzzedDataProvider in(data, size);
  vesk_fuzz::PickCodePage(in);
  const vesk_fuzz::LiveBlocksBalance balance;
  const int version = in.ConsumeIntegralInRange(4, 7);
  const bool plus = in.ConsumeBool();
  const bool convert = in.ConsumeBool();
  const std::string raw = in.ConsumeRemainingBytesAsString();
  const std::string text = raw.c_str();  // what the encoders read
  const bool has_percent = text.find('%') != std::string::npos;

  VeskString form;
  form.EncodeString(text.c_str(), version, plus, convert);
  const std::string form_source = Source(text, version >= 6 && convert);
  const std::string form_text = Bytes(form);
  VESK_CHECK(IsFormEncoded(form_text, plus));
  VESK_CHECK(model::PercentDecode(form_text, plus) == form_source);

  VeskString high;
  high.EncodeStringHighAscii(text.c_str(), version);
  const std::string high_source = Source(text, version >= 6);
  if (high_source.find('%') == std::string::npos) {
    VESK_CHECK(model::PercentDecode(Bytes(high), false) == high_source);
  }

  const VeskString source(text.c_str());
  if (text.empty()) {
    VESK_CHECK(source.CreateEscapedCStr(true) == nullptr);
    return 0;
  }
  VESK_CHECK(model::PercentDecode(Take(source.CreateEscapedCStr(true)),
                                  false) == text);
  if (!has_percent) {
    for (char* copy : {source.CreateEscapedCStr(false),
                       source.CreateUpper128ASCIIEscapedCStr(),
                       source.CreateEncodedUrl()}) {
      VESK_CHECK(model::PercentDecode(Take(copy), false) == text);
    }
  }
  return 0;
}
