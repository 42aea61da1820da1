#pragma once

// Pages are below https://developer.apple.com/documentation/foundation/
#include <CoreFoundation/CoreFoundation.h>
#include <objc/NSObject.h>

#define FOUNDATION_EXPORT CF_EXPORT

#pragma clang assume_nonnull begin

@class NSError, NSTimer, NSURL;
typedef struct _NSZone NSZone;
typedef double NSTimeInterval;  // timeinterval
typedef CGRect NSRect;          // nsrect
typedef CGSize NSSize;          // nssize

// comparisonresult
typedef CF_ENUM(NSInteger, NSComparisonResult) {
  NSOrderedAscending = -1L,
  NSOrderedSame,
  NSOrderedDescending,
};

@protocol NSCopying  // nscopying
- (id)copyWithZone:(nullable NSZone*)zone;
@end

typedef NSUInteger NSStringEncoding;  // nsstringencoding
enum : NSStringEncoding {
  NSUTF8StringEncoding = 4,
  NSISOLatin1StringEncoding = 5,
};

@interface NSString : NSObject <NSCopying>  // nsstring
- (instancetype)init;
- (nullable instancetype)initWithBytes:(const void*)bytes
                                length:(NSUInteger)length
                              encoding:(NSStringEncoding)encoding;
// The bytes belong to the string and go with it: without the attribute, ARC may release the
// string before they are read.
@property(nullable, readonly) const char* UTF8String __attribute__((objc_returns_inner_pointer));
- (NSComparisonResult)localizedCaseInsensitiveCompare:(NSString*)string;
@end

@interface NSValue : NSObject <NSCopying>  // nsvalue
@end

@interface NSNumber : NSValue  // nsnumber
+ (NSNumber*)numberWithBool:(BOOL)value;
+ (NSNumber*)numberWithDouble:(double)value;
+ (NSNumber*)numberWithLongLong:(long long)value;
+ (NSNumber*)numberWithUnsignedInt:(unsigned int)value;
@end

@interface NSArray<__covariant ObjectType> : NSObject <NSCopying>  // nsarray
@property(readonly) NSUInteger count;
@property(nullable, nonatomic, readonly) ObjectType firstObject;
- (ObjectType)objectAtIndexedSubscript:(NSUInteger)index;
@end

@interface NSMutableArray<ObjectType> : NSArray <ObjectType>  // nsmutablearray
+ (instancetype)array;
- (void)addObject:(ObjectType)object;
@end

@interface NSDictionary<__covariant KeyType, __covariant ObjectType> : NSObject <NSCopying>
// nsdictionary
@property(readonly) NSUInteger count;
- (nullable ObjectType)objectForKeyedSubscript:(KeyType)key;
@end

@interface NSMutableDictionary<KeyType, ObjectType> : NSDictionary <KeyType, ObjectType>
// nsmutabledictionary
+ (instancetype)dictionary;
- (void)setObject:(nullable ObjectType)object forKeyedSubscript:(KeyType<NSCopying>)key;
@end

@interface NSError : NSObject  // nserror
@property(readonly, copy) NSString* domain;
@property(readonly) NSInteger code;
@property(readonly, copy) NSString* localizedDescription;
@end

typedef NSString* NSExceptionName;  // nsexceptionname

__attribute__((objc_exception))
@interface NSException : NSObject  // nsexception
@property(readonly, copy) NSExceptionName name;
@property(nullable, readonly, copy) NSString* reason;
@end

@interface NSURL : NSObject <NSCopying>  // nsurl
+ (nullable instancetype)URLWithString:(NSString*)string;
+ (NSURL*)fileURLWithFileSystemRepresentation:(const char*)path
                                  isDirectory:(BOOL)isDirectory
                                relativeToURL:(nullable NSURL*)baseURL;
@property(nullable, readonly, copy) NSString* absoluteString;
@property(readonly) const char* fileSystemRepresentation __attribute__((objc_returns_inner_pointer))
;
@end

@interface NSUUID : NSObject <NSCopying>  // nsuuid
+ (instancetype)UUID;
@property(readonly, copy) NSString* UUIDString;
@end

// filemanager/searchpathdirectory, filemanager/searchpathdomainmask
typedef CF_ENUM(NSUInteger, NSSearchPathDirectory) { NSDownloadsDirectory = 15 };
typedef CF_ENUM(NSUInteger, NSSearchPathDomainMask) { NSUserDomainMask = 1 };

@interface NSFileManager : NSObject  // filemanager
@property(class, readonly, strong) NSFileManager* defaultManager;
@property(readonly, copy) NSURL* homeDirectoryForCurrentUser API_AVAILABLE(macos(10.12));
- (NSArray<NSURL*>*)URLsForDirectory:(NSSearchPathDirectory)directory
                           inDomains:(NSSearchPathDomainMask)domains API_AVAILABLE(macos(10.6));
- (BOOL)fileExistsAtPath:(NSString*)path;
- (NSString*)stringWithFileSystemRepresentation:(const char*)path length:(NSUInteger)length;
@end

@interface NSUserDefaults : NSObject  // userdefaults
@property(class, readonly, strong) NSUserDefaults* standardUserDefaults;
- (nullable NSString*)stringForKey:(NSString*)key;
- (void)setObject:(nullable id)value forKey:(NSString*)key;
- (void)removeObjectForKey:(NSString*)key;
- (void)removePersistentDomainForName:(NSString*)domainName;
@end

@interface NSProcessInfo : NSObject  // processinfo
@property(class, readonly, strong) NSProcessInfo* processInfo;
@property(readonly, copy) NSString* processName;  // could be set, too
@end

@interface NSTimer : NSObject  // timer
// The run loop keeps the timer, and the timer its block, until it is invalidated.
+ (NSTimer*)scheduledTimerWithTimeInterval:(NSTimeInterval)interval
                                   repeats:(BOOL)repeats
                                     block:(void (^)(NSTimer* timer))block
    API_AVAILABLE(macos(10.12));
- (void)invalidate;
@end

@interface NSNotification : NSObject  // nsnotification
@end

// cfbridgingrelease(_:). Takes over the reference that the caller owns.
static inline id _Nullable CFBridgingRelease(CFTypeRef _Nullable reference) {
  return (__bridge_transfer id)reference;
}

#pragma clang assume_nonnull end
