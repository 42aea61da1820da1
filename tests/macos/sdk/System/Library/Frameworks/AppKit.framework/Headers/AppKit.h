#pragma once

// Pages are below https://developer.apple.com/documentation/appkit/
#include <Foundation/Foundation.h>
#include <sys/types.h>

#define APPKIT_EXTERN CF_EXPORT

#pragma clang assume_nonnull begin

@class NSApplication, NSFont, NSImage, NSMenu, NSNotification;

// nsapplication/activationpolicy-swift.enum
typedef CF_ENUM(NSInteger, NSApplicationActivationPolicy) {
  NSApplicationActivationPolicyRegular,
  NSApplicationActivationPolicyAccessory,
  NSApplicationActivationPolicyProhibited,
};

@protocol NSApplicationDelegate <NSObject>  // nsapplicationdelegate
@optional
- (void)applicationDidFinishLaunching:(NSNotification*)notification;
- (void)applicationWillTerminate:(NSNotification*)notification;
@end

@interface NSResponder : NSObject  // nsresponder
@end

@interface NSApplication : NSResponder  // nsapplication
@property(class, readonly, strong) __kindof NSApplication* sharedApplication;
@property(nullable, weak) id<NSApplicationDelegate> delegate;
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy;
- (void)run;
- (void)terminate:(nullable id)sender;
@end

// nscontrol/stateValue
typedef NSInteger NSControlStateValue;
static const NSControlStateValue NSControlStateValueOff = 0;
static const NSControlStateValue NSControlStateValueOn = 1;

@protocol NSMenuDelegate <NSObject>  // nsmenudelegate
@optional
- (void)menuWillOpen:(NSMenu*)menu;
@end

@interface NSMenuItem : NSObject  // nsmenuitem
+ (NSMenuItem*)separatorItem;
- (instancetype)initWithTitle:(NSString*)title
                       action:(nullable SEL)action
                keyEquivalent:(NSString*)keyEquivalent;
@property(nullable, weak) id target;
@property(nullable) SEL action;
@property(getter=isEnabled) BOOL enabled;
@property NSControlStateValue state;
@property(nullable, strong) NSMenu* submenu;
@property(nullable, strong) id representedObject;
@end

@interface NSMenu : NSObject  // nsmenu
- (instancetype)initWithTitle:(NSString*)title;
@property BOOL autoenablesItems;
@property(nullable, weak) id<NSMenuDelegate> delegate;
- (void)addItem:(NSMenuItem*)item;
@end

@interface NSColor : NSObject  // nscolor
@property(class, strong, readonly) NSColor* systemRedColor API_AVAILABLE(macos(10.10));
@property(class, strong, readonly) NSColor* systemOrangeColor API_AVAILABLE(macos(10.10));
- (void)set;
@end

// nsfont/weight
typedef CGFloat NSFontWeight;
APPKIT_EXTERN const NSFontWeight NSFontWeightRegular API_AVAILABLE(macos(10.11));

@interface NSFont : NSObject  // nsfont
+ (NSFont*)monospacedDigitSystemFontOfSize:(CGFloat)size
                                    weight:(NSFontWeight)weight API_AVAILABLE(macos(10.11));
@end

// nscompositingoperation
typedef CF_ENUM(NSUInteger, NSCompositingOperation) { NSCompositingOperationSourceAtop = 5 };

// nsrectfillusingoperation
APPKIT_EXTERN void NSRectFillUsingOperation(NSRect rect, NSCompositingOperation operation);

API_AVAILABLE(macos(11.0))
@interface NSImageSymbolConfiguration : NSObject  // nsimage/symbolconfiguration-swift.class
+ (instancetype)configurationWithPointSize:(CGFloat)pointSize weight:(NSFontWeight)weight;
@end

@interface NSImage : NSObject  // nsimage
+ (nullable instancetype)imageWithSystemSymbolName:(NSString*)name
                          accessibilityDescription:(nullable NSString*)description
    API_AVAILABLE(macos(11.0));
- (instancetype)initWithSize:(NSSize)size;
- (nullable NSImage*)imageWithSymbolConfiguration:(NSImageSymbolConfiguration*)configuration
    API_AVAILABLE(macos(11.0));
@property NSSize size;
// The property's name is a word of C++.
- (BOOL)isTemplate;
- (void)setTemplate:(BOOL)isTemplate;
// Deprecated by their pages. Since when the headers say so was not seen: from 14.0 at the earliest.
- (void)lockFocus API_DEPRECATED("Not independent of the resolution.", macos(10.0, 14.0));
- (void)unlockFocus API_DEPRECATED("Not independent of the resolution.", macos(10.0, 14.0));
- (void)drawInRect:(NSRect)rect;
@end

@interface NSView : NSResponder  // nsview
@end

@interface NSControl : NSView  // nscontrol
@property(nullable, strong) NSFont* font;
@end

// nscontrol/imageposition
typedef CF_ENUM(NSUInteger, NSCellImagePosition) { NSImageLeft = 2 };

@interface NSButton : NSControl  // nsbutton
@property(copy) NSString* title;
@property(nullable, strong) NSImage* image;
@property NSCellImagePosition imagePosition;
@end

API_AVAILABLE(macos(10.10))
@interface NSStatusBarButton : NSButton  // nsstatusbarbutton
@end

static const CGFloat NSVariableStatusItemLength = -1.0;  // nsstatusitem/variablelength

@interface NSStatusItem : NSObject  // nsstatusitem
@property(nullable, readonly, strong) NSStatusBarButton* button API_AVAILABLE(macos(10.10));
@property(nullable, strong) NSMenu* menu;
@end

@interface NSStatusBar : NSObject  // nsstatusbar
@property(class, readonly, strong) NSStatusBar* systemStatusBar;
- (NSStatusItem*)statusItemWithLength:(CGFloat)length;
- (void)removeStatusItem:(NSStatusItem*)item;
@end

// nsalert/style
typedef CF_ENUM(NSUInteger, NSAlertStyle) {
  NSAlertStyleWarning = 0,
  NSAlertStyleInformational = 1,
  NSAlertStyleCritical = 2,
};

// nsapplication/modalresponse
typedef NSInteger NSModalResponse;
static const NSModalResponse NSAlertFirstButtonReturn = 1000;
static const NSModalResponse NSAlertSecondButtonReturn = 1001;

// nswindow/level-swift.struct
typedef NSInteger NSWindowLevel;
static const NSWindowLevel NSFloatingWindowLevel = 3;

@interface NSWindow : NSResponder  // nswindow
@property BOOL preventsApplicationTerminationWhenModal API_AVAILABLE(macos(10.6));
@property NSWindowLevel level;
@end

@interface NSAlert : NSObject  // nsalert
@property(copy) NSString* messageText;
@property(copy) NSString* informativeText;
@property NSAlertStyle alertStyle;
@property(readonly, strong) NSWindow* window;
- (NSButton*)addButtonWithTitle:(NSString*)title;
- (NSModalResponse)runModal;
@end

@interface NSWorkspace : NSObject  // nsworkspace
@property(class, readonly, strong) NSWorkspace* sharedWorkspace;
- (BOOL)openURL:(NSURL*)url;
- (void)activateFileViewerSelectingURLs:(NSArray<NSURL*>*)urls API_AVAILABLE(macos(10.6));
@end

@interface NSRunningApplication : NSObject  // nsrunningapplication
+ (nullable instancetype)runningApplicationWithProcessIdentifier:(pid_t)pid
    API_AVAILABLE(macos(10.6));
@property(nullable, readonly, copy) NSString* localizedName;
@end

#pragma clang assume_nonnull end
