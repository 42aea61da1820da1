#pragma once

#include <cstddef>

/// A small Objective-C runtime for tests on x86-64 Linux. It executes what clang compiled with
/// `-fobjc-runtime=macosx -fobjc-arc`: classes, categories, messages, reference counts, weak
/// references, autorelease pools, properties, blocks and exceptions.
///
/// It is stricter than the real one where that finds faults: an autoreleased object is never handed
/// over past its pool, so a pool that is missing keeps the object alive, here always and on a Mac
/// sometimes; and an object that is sent what it does not know ends the process.
namespace audrel::objcruntime {

/// Objects that were made and are not gone. Blocks do not count.
std::size_t liveObjects();

/// Of the class of that name, not of its subclasses.
std::size_t liveObjectsOf(const char* className);

/// Objects that were autoreleased on a thread without a pool since the process began. They live
/// for ever, as they might on a Mac.
std::size_t autoreleasedWithoutPool();

/// Class metadata: whether there is such a class, with that method.
bool instancesRespondTo(const char* className, const char* selector);

}  // namespace audrel::objcruntime
