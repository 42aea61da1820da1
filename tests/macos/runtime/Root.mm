// The root class. Counts references by hand: compiled without ARC.

#include <objc/NSObject.h>

extern "C" {
id audrelMakeInstance(Class type);
void audrelDestroyInstance(id object);
}

@implementation NSObject

+ (instancetype)alloc {
  return audrelMakeInstance(self);
}

+ (Class)class {
  return self;
}

- (instancetype)init {
  return self;
}

- (void)dealloc {
  audrelDestroyInstance(self);
}

- (Class)class {
  return isa;
}

- (BOOL)isEqual:(id)object {
  return self == object;
}

- (NSUInteger)hash {
  return reinterpret_cast<NSUInteger>(self) >> 4;
}

@end
