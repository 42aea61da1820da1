// Exceptions. As in the real runtime, they are C++'s, thrown with a type that is caught by class:
// so they unwind C++ frames, and `catch (...)` catches them.

#include <cxxabi.h>
#include <unwind.h>

#include <new>
#include <typeinfo>

#include "tests/macos/runtime/Metadata.h"

namespace objc = audrel::objcruntime;

extern "C" {
objc::Object* objc_retain(objc::Object* object);
void objc_release(objc::Object* object);
_Unwind_Reason_Code __gxx_personality_v0(int version, _Unwind_Action actions,
                                         _Unwind_Exception_Class exceptionClass,
                                         _Unwind_Exception* exception, _Unwind_Context* context);
}

namespace audrel::objcruntime {

/// What the compiler lays out as `OBJC_EHTYPE_$_` for a class that can be caught.
class ThrownType final : public std::type_info {
 public:
  explicit ThrownType(const Class* type) : type_info(type->data().name), class_(type) {}

  /// The handler gets what was thrown, and not its place.
  bool __is_pointer_p() const override { return true; }

  bool __do_catch(const std::type_info* thrown, void** object, unsigned outer) const override;

 private:
  const Class* class_;
};

bool ThrownType::__do_catch(const std::type_info* thrown, void**, unsigned) const {
  const auto* other = dynamic_cast<const ThrownType*>(thrown);
  const Class* type = other == nullptr ? nullptr : other->class_;
  while (type != nullptr && type != class_) {
    type = type->superclass;
  }
  return type != nullptr;
}

}  // namespace audrel::objcruntime

// The compiler refers to that class's table of virtual functions by this name.
asm(R"(
  .globl objc_ehtype_vtable
  .set objc_ehtype_vtable, _ZTVN6audrel11objcruntime10ThrownTypeE
)");

namespace {

struct Thrown {
  objc::Object* object;
  objc::ThrownType type;
};

void dropThrown(void* thrown) {
  objc_release(static_cast<Thrown*>(thrown)->object);
}

}  // namespace

extern "C" {

[[noreturn]] void objc_exception_throw(objc::Object* object) {
  auto* thrown = new (abi::__cxa_allocate_exception(sizeof(Thrown)))
      Thrown{objc_retain(object), objc::ThrownType(object->isa)};
  abi::__cxa_throw(thrown, &thrown->type, dropThrown);
}

void* objc_begin_catch(void* exception) {
  return abi::__cxa_begin_catch(exception);
}

void objc_end_catch() {
  abi::__cxa_end_catch();
}

_Unwind_Reason_Code __objc_personality_v0(int version, _Unwind_Action actions,
                                          _Unwind_Exception_Class exceptionClass,
                                          _Unwind_Exception* exception, _Unwind_Context* context) {
  return __gxx_personality_v0(version, actions, exceptionClass, exception, context);
}

}  // extern "C"
