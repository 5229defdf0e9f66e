// VeskString: a script object's variables as a query.
#include "host/object_model.h"
#include "host/vm_string.h"
#include "internal.h"
#include "veskstring.h"

namespace {

// Whether the text already holds pairs: a '=', '&' or '?' among its 16-bit
// units, searched from the end.
bool HoldsPairs(CorePlayer* player, const char* text, int version) {
  const VeskString16 wide(player, text, version);
  const StringRep16* rep = wide.Rep();
  const unsigned short* units = rep->String();
  for (int i = rep->Length() - 1; i >= 0; --i) {
    if (units[i] == '=' || units[i] == '&' || units[i] == '?') return true;
  }
  return false;
}

}  // namespace

void VeskString::EncodeVariables(CorePlayer* player,
                                 Pelgc::GCAPI::GCRef<ScriptObject> object,
                                 int version, bool noQuestionMark) {
  bool firstPair = !HoldsPairs(player, m_text, version);
  ScriptVariableIterator variables(object, false);
  while (ScriptVariable* variable = variables.Next()) {
    // Declared name first, so the value copy is released before it.
    const vesk::ScopedBlock name(variable->Name().Get8BitCopyOfStringData());
    if (name.get() == nullptr || name.get()[0] == '$' ||
        (variable->GetFlags() & kDontEnumFlag) != 0) {
      continue;
    }
    const vesk::ScopedBlock value(
        player->ToString(ScriptAtom(variable->value)));
    if (value.get() == nullptr) continue;
    if (!firstPair) {
      AppendChar('&');
    } else if (!noQuestionMark) {
      AppendChar('?');
    }
    firstPair = false;
    const bool convert = player->convertToCodePage;
    EncodeString(name.get(), version, true, convert);
    AppendChar('=');
    EncodeString(value.get(), version, true, convert);
  }
}
