#pragma once

/// What the declarations say about ownership, put to use as a caller or an implementor of them
/// would: true when it is so. Where bytes are read after their owner, the address sanitizer ends
/// the process when it is not.
///
/// A file of its own, without the testing framework: check-declarations.py compiles it once for
/// each word of the declarations that it takes out.
namespace audrel::macos::declared {

bool bytesOfAStringOutliveItsLastReference();
bool thePathOfAURLOutlivesIt();
bool aLogIsItsCreatorsAlone();
bool aQueueIsItsCreatorsAlone();
bool aSourceIsItsCreatorsAlone();
bool aReferenceThatIsBridgedOverIsTakenOver();
bool theTargetOfAnItemIsWeak();
bool theDelegateOfAMenuIsWeak();
bool theDelegateOfTheApplicationIsWeak();
bool theTitleOfAButtonIsACopy();
bool theMessageOfAnAlertIsACopy();
bool theInformationOfAnAlertIsACopy();
bool theNameOfATapIsACopy();
bool theUUIDOfATapIsACopy();
bool theProcessesOfATapAreACopy();

}  // namespace audrel::macos::declared
