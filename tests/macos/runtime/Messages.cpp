// Sending messages. The functions have to pass on arguments of every type, so they are assembly:
// save the registers that carry arguments, look the method up, restore them and jump.

#include <cstdio>
#include <cstdlib>

#include "tests/macos/runtime/Classes.h"

namespace objc = audrel::objcruntime;

namespace {

objc::Implementation implementationOrAbort(const objc::Class* type, objc::Selector selector) {
  if (const objc::Implementation found = objc::find(type, selector)) {
    return found;
  }
  const objc::ClassData& data = objc::resolved(type)->data();
  const char kind = (data.flags & objc::isMetaclass) != 0 ? '+' : '-';
  std::fprintf(stderr, "%c[%s %s]: unrecognized selector\n", kind, data.name, selector);
  std::abort();
}

struct Super {
  objc::Object* receiver;
  objc::Class* type;
};

}  // namespace

extern "C" {

[[gnu::used]] objc::Implementation audrelLookUp(objc::Object* receiver, objc::Selector selector) {
  return implementationOrAbort(receiver->isa, selector);
}

/// Puts the receiver in the place of what was sent to.
[[gnu::used]] objc::Implementation audrelLookUpSuper(Super* super, objc::Selector selector) {
  return implementationOrAbort(super->type->superclass, selector);
}

}  // extern "C"

// clang-format off
asm(R"(
  .macro SAVE_ARGUMENTS
    push %rbp
    mov %rsp, %rbp
    sub $192, %rsp
    mov %rdi, -8(%rbp)
    mov %rsi, -16(%rbp)
    mov %rdx, -24(%rbp)
    mov %rcx, -32(%rbp)
    mov %r8, -40(%rbp)
    mov %r9, -48(%rbp)
    mov %rax, -56(%rbp)
    movups %xmm0, -80(%rbp)
    movups %xmm1, -96(%rbp)
    movups %xmm2, -112(%rbp)
    movups %xmm3, -128(%rbp)
    movups %xmm4, -144(%rbp)
    movups %xmm5, -160(%rbp)
    movups %xmm6, -176(%rbp)
    movups %xmm7, -192(%rbp)
  .endm
  .macro RESTORE_ARGUMENTS
    mov %rax, %r11
    mov -8(%rbp), %rdi
    mov -16(%rbp), %rsi
    mov -24(%rbp), %rdx
    mov -32(%rbp), %rcx
    mov -40(%rbp), %r8
    mov -48(%rbp), %r9
    mov -56(%rbp), %rax
    movups -80(%rbp), %xmm0
    movups -96(%rbp), %xmm1
    movups -112(%rbp), %xmm2
    movups -128(%rbp), %xmm3
    movups -144(%rbp), %xmm4
    movups -160(%rbp), %xmm5
    movups -176(%rbp), %xmm6
    movups -192(%rbp), %xmm7
    leave
  .endm

  .text
  .globl objc_msgSend
  .type objc_msgSend, @function
objc_msgSend:
  test %rdi, %rdi
  je 1f
  SAVE_ARGUMENTS
  call audrelLookUp
  RESTORE_ARGUMENTS
  jmp *%r11
1:
  xor %eax, %eax
  xor %edx, %edx
  xorps %xmm0, %xmm0
  xorps %xmm1, %xmm1
  ret

  .globl objc_msgSendSuper2
  .type objc_msgSendSuper2, @function
objc_msgSendSuper2:
  SAVE_ARGUMENTS
  call audrelLookUpSuper
  mov -8(%rbp), %rcx
  mov (%rcx), %rcx
  mov %rcx, -8(%rbp)
  RESTORE_ARGUMENTS
  jmp *%r11
)");
// clang-format on
