// This host's script object model: objects holding named variables, atoms
// for names and values, and the player that turns a value into text.
// vesk::core is compiled against this header, so its classes are this
// host's own; the iterator, for one, holds more than the default host's.
// The out-of-line functions are in host.cpp; the module calls
// ScriptVariableIterator's constructor and Next,
// ScriptAtom::Get8BitCopyOfStringData and CorePlayer::ToString, and the
// rest are how this host's own code builds objects.
#ifndef CUSTOM_HOST_OBJECT_MODEL_H
#define CUSTOM_HOST_OBJECT_MODEL_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Pelgc {
namespace GCAPI {

// A reference to an object, passed by value; here a counted reference.
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

class ScriptAtom {
 public:
  enum class Kind { kUndefined, kNull, kBoolean, kNumber, kString };

  static ScriptAtom Undefined() { return ScriptAtom(Kind::kUndefined); }
  static ScriptAtom Null() { return ScriptAtom(Kind::kNull); }
  static ScriptAtom FromBool(bool value);
  static ScriptAtom FromNumber(double value);
  static ScriptAtom FromString(const char* utf8);
  ScriptAtom(const RCScriptAtom& counted);  // NOLINT: the host's conversion

  Kind GetKind() const { return m_kind; }
  bool Boolean() const { return m_boolean; }
  double Number() const { return m_number; }
  const std::string& StringData() const { return m_string; }

  // A heap copy of a string atom's bytes; null for any other kind.
  char* Get8BitCopyOfStringData() const;

 private:
  explicit ScriptAtom(Kind kind) : m_kind(kind) {}

  Kind m_kind;
  bool m_boolean = false;
  double m_number = 0;
  std::string m_string;
};

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
  void SetVariable(const char* name, const ScriptAtom& value,
                   std::uint16_t flags = 0);

 private:
  friend class ScriptVariableIterator;
  std::vector<ScriptVariable> m_variables;
};

// Yields the variables an object holds when the walk starts, in insertion
// order; variables added during the walk are not visited.
class ScriptVariableIterator {
 public:
  ScriptVariableIterator(Pelgc::GCAPI::GCRef<ScriptObject> object,
                         bool includeInherited);
  ScriptVariable* Next();

 private:
  Pelgc::GCAPI::GCRef<ScriptObject> m_object;
  std::size_t m_next = 0;
  std::size_t m_end = 0;
};

class CorePlayer {
 public:
  // Names and values of variable encoding go to the code page.
  bool convertToCodePage = false;

  // A heap text, or null.
  char* ToString(const ScriptAtom& value);
};

#endif  // CUSTOM_HOST_OBJECT_MODEL_H
