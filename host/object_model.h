// The script object model, as the text module sees it: objects holding
// named variables, atoms for names and values, and the player that turns a
// value into text.
#ifndef VESK_HOST_OBJECT_MODEL_H
#define VESK_HOST_OBJECT_MODEL_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Pelgc {
namespace GCAPI {

// A reference to a collected object, passed by value. The default host
// counts references instead of collecting.
template <class T>
class GCRef {
 public:
  GCRef() = default;
  explicit GCRef(std::shared_ptr<T> object) : m_object(std::move(object)) {}
  T* operator->() const { return m_object.get(); }
  T* get() const { return m_object.get(); }

 private:
  std::shared_ptr<T> m_object;
};

}  // namespace GCAPI
}  // namespace Pelgc

class RCScriptAtom;

// A script value: undefined, null, a boolean, a number or a UTF-8 string.
class ScriptAtom {
 public:
  enum class Kind { kUndefined, kNull, kBoolean, kNumber, kString };

  static ScriptAtom Undefined() { return ScriptAtom(Kind::kUndefined); }
  static ScriptAtom Null() { return ScriptAtom(Kind::kNull); }
  static ScriptAtom FromBool(bool value);
  static ScriptAtom FromNumber(double value);
  static ScriptAtom FromString(const char* utf8);  // null gives ""
  ScriptAtom(const RCScriptAtom& counted);  // NOLINT: the host's conversion

  Kind GetKind() const { return m_kind; }
  bool Boolean() const { return m_boolean; }
  double Number() const { return m_number; }
  const std::string& StringData() const { return m_string; }

  // A host heap copy of a string atom's bytes, requested with
  // kMayReturnNull; null for any other kind and when the heap gives no
  // block.
  char* Get8BitCopyOfStringData() const;

 private:
  explicit ScriptAtom(Kind kind) : m_kind(kind) {}

  Kind m_kind;
  bool m_boolean = false;
  double m_number = 0;
  std::string m_string;
};

// The counted form in which a variable holds its value.
class RCScriptAtom {
 public:
  explicit RCScriptAtom(const ScriptAtom& atom) : m_atom(atom) {}
  const ScriptAtom& Atom() const { return m_atom; }

 private:
  ScriptAtom m_atom;
};

inline ScriptAtom::ScriptAtom(const RCScriptAtom& counted)
    : ScriptAtom(counted.Atom()) {}

class ScriptVariable {
 public:
  ScriptVariable(const char* name, const ScriptAtom& value, std::uint16_t flags)
      : value(value), m_name(ScriptAtom::FromString(name)), m_flags(flags) {}
  ScriptAtom Name() const { return m_name; }
  std::uint16_t GetFlags() const { return m_flags; }

  RCScriptAtom value;

 private:
  friend class ScriptObject;
  ScriptAtom m_name;
  std::uint16_t m_flags;
};

class ScriptObject {
 public:
  static Pelgc::GCAPI::GCRef<ScriptObject> Create();
  // Adds a variable at the end, or replaces the value and flags of the one
  // of that name in place. A null name is ignored.
  void SetVariable(const char* name, const ScriptAtom& value,
                   std::uint16_t flags = 0);

 private:
  friend class ScriptVariableIterator;
  std::vector<ScriptVariable> m_variables;
};

// Yields an object's variables in insertion order. The default host has no
// inherited variables, so `includeInherited` changes nothing here.
class ScriptVariableIterator {
 public:
  ScriptVariableIterator(Pelgc::GCAPI::GCRef<ScriptObject> object,
                         bool includeInherited);
  ScriptVariable* Next();

 private:
  Pelgc::GCAPI::GCRef<ScriptObject> m_object;
  std::size_t m_next = 0;
};

class CorePlayer {
 public:
  // Names and values of variable encoding go to the host code page.
  bool convertToCodePage = false;

  // The text of a value as a host heap text, requested with kMayReturnNull;
  // null when the heap gives no block.
  char* ToString(const ScriptAtom& value);
};

#endif  // VESK_HOST_OBJECT_MODEL_H
