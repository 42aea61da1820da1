#pragma once

// Pages are below https://developer.apple.com/documentation/objectivec/
#include <objc/objc.h>

@protocol NSObject  // nsobjectprotocol
- (BOOL)isEqual:(nullable id)object;
- (Class _Nonnull)class;
@property(readonly) NSUInteger hash;
@end

__attribute__((objc_root_class))
@interface NSObject<NSObject> {  // nsobject-swift.class
  Class isa;
}
+ (nonnull instancetype)alloc;
+ (Class _Nonnull)class;
- (nonnull instancetype)init;
- (void)dealloc;
@end
