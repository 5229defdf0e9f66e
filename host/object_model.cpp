#include "object_model.h"

#include <cstring>

#include "memory_manager.h"
#include "text_services.h"

namespace {

char* HeapCopy(const std::string& text) {
  auto* copy = static_cast<char*>(
      Pelgc::SystemNew(text.size() + 1, Pelgc::kMayReturnNull));
  if (copy != nullptr) std::memcpy(copy, text.c_str(), text.size() + 1);
  return copy;
}

}  // namespace

ScriptAtom ScriptAtom::FromBool(bool value) {
  ScriptAtom atom(Kind::kBoolean);
  atom.m_boolean = value;
  return atom;
}

ScriptAtom ScriptAtom::FromNumber(double value) {
  ScriptAtom atom(Kind::kNumber);
  atom.m_number = value;
  return atom;
}

ScriptAtom ScriptAtom::FromString(const char* utf8) {
  ScriptAtom atom(Kind::kString);
  if (utf8 != nullptr) atom.m_string = utf8;
  return atom;
}

char* ScriptAtom::Get8BitCopyOfStringData() const {
  return m_kind == Kind::kString ? HeapCopy(m_string) : nullptr;
}

Pelgc::GCAPI::GCRef<ScriptObject> ScriptObject::Create() {
  return Pelgc::GCAPI::GCRef<ScriptObject>(std::make_shared<ScriptObject>());
}

void ScriptObject::SetVariable(const char* name, const ScriptAtom& value,
                               std::uint16_t flags) {
  if (name == nullptr) return;
  for (ScriptVariable& variable : m_variables) {
    if (variable.m_name.StringData() == name) {
      variable.value = RCScriptAtom(value);
      variable.m_flags = flags;
      return;
    }
  }
  m_variables.emplace_back(name, value, flags);
}

ScriptVariableIterator::ScriptVariableIterator(
    Pelgc::GCAPI::GCRef<ScriptObject> object, bool /*includeInherited*/)
    : m_object(std::move(object)) {}

ScriptVariable* ScriptVariableIterator::Next() {
  if (m_object.get() == nullptr) return nullptr;
  std::vector<ScriptVariable>& variables = m_object->m_variables;
  return m_next < variables.size() ? &variables[m_next++] : nullptr;
}

char* CorePlayer::ToString(const ScriptAtom& value) {
  switch (value.GetKind()) {
    case ScriptAtom::Kind::kString: return HeapCopy(value.StringData());
    case ScriptAtom::Kind::kNumber:
      return ConvertDoubleToString(value.Number());
    case ScriptAtom::Kind::kBoolean:
      return HeapCopy(value.Boolean() ? "true" : "false");
    default:
      // Undefined and null read as the script language itself prints them,
      // so a form carries what the script would show.
      return HeapCopy(value.GetKind() == ScriptAtom::Kind::kNull ? "null"
                                                                 : "undefined");
  }
}
