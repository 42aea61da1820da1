// Blocks, after the published description of their layout. They capture objects alone: what else a
// block may capture, platform/macos does not use.

#include "tests/macos/runtime/Blocks.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

namespace objc = audrel::objcruntime;

extern "C" {
void* _NSConcreteStackBlock[32];
void* _NSConcreteMallocBlock[32];
void* _NSConcreteGlobalBlock[32];
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

}  // extern "C"
