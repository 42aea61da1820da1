// Blocks, after the published description of their layout. Without `__block` variables, which
// platform/macos does not use.

#include "tests/macos/runtime/Blocks.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace objc = audrel::objcruntime;

extern "C" {
void* _NSConcreteStackBlock[32];
void* _NSConcreteMallocBlock[32];
void* _NSConcreteGlobalBlock[32];
objc::Object* objc_retain(objc::Object* object);
void objc_release(objc::Object* object);
}

namespace {

struct Descriptor {
  unsigned long reserved;
  unsigned long size;
  void (*copy)(void* to, const void* from);
  void (*dispose)(const void* block);
};

struct Block {
  void* isa;
  std::int32_t flags;
  std::atomic<std::int32_t> references;
  void (*invoke)(void*, ...);
  Descriptor* descriptor;
};

constexpr std::int32_t hasCopyAndDispose = 1 << 25;
constexpr int fieldIsObject = 3;
constexpr int fieldIsBlock = 7;
constexpr int fieldKinds = 31;

[[noreturn]] void refuse(int flags) {
  std::fprintf(stderr, "a captured variable of kind %d\n", flags);
  std::abort();
}

}  // namespace

bool objc::isBlock(const Object* object) {
  const void* isa = object->isa;
  return isa == _NSConcreteStackBlock || isa == _NSConcreteMallocBlock ||
         isa == _NSConcreteGlobalBlock;
}

extern "C" {

void* _Block_copy(const void* original) {
  auto* block = static_cast<Block*>(const_cast<void*>(original));
  if (block == nullptr || block->isa == _NSConcreteGlobalBlock) {
    return block;
  }
  if (block->isa == _NSConcreteMallocBlock) {
    block->references.fetch_add(1, std::memory_order_relaxed);
    return block;
  }
  auto* copy = static_cast<Block*>(std::malloc(block->descriptor->size));
  std::memcpy(static_cast<void*>(copy), block, block->descriptor->size);
  copy->isa = _NSConcreteMallocBlock;
  copy->references.store(1, std::memory_order_relaxed);
  if ((block->flags & hasCopyAndDispose) != 0) {
    block->descriptor->copy(copy, block);
  }
  return copy;
}

void _Block_release(const void* released) {
  auto* block = static_cast<Block*>(const_cast<void*>(released));
  if (block == nullptr || block->isa != _NSConcreteMallocBlock ||
      block->references.fetch_sub(1, std::memory_order_acq_rel) != 1) {
    return;
  }
  if ((block->flags & hasCopyAndDispose) != 0) {
    block->descriptor->dispose(block);
  }
  std::free(block);
}

objc::Object* objc_retainBlock(objc::Object* block) {
  return static_cast<objc::Object*>(_Block_copy(block));
}

void _Block_object_assign(void* to, const void* object, int flags) {
  switch (flags & fieldKinds) {
    case fieldIsObject:
      *static_cast<objc::Object**>(to) =
          objc_retain(static_cast<objc::Object*>(const_cast<void*>(object)));
      return;
    case fieldIsBlock:
      *static_cast<void**>(to) = _Block_copy(object);
      return;
    default:
      refuse(flags);
  }
}

void _Block_object_dispose(const void* object, int flags) {
  switch (flags & fieldKinds) {
    case fieldIsObject:
      objc_release(static_cast<objc::Object*>(const_cast<void*>(object)));
      return;
    case fieldIsBlock:
      _Block_release(object);
      return;
    default:
      refuse(flags);
  }
}

}  // extern "C"
