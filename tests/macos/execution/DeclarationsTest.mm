// What our declarations say about ownership, each seen at work: a wrong one compiles, and frees too
// early or never. That each test can fail: check-declarations.py.

#include "tests/macos/execution/Declared.h"
#include "tests/macos/execution/MacTest.h"

namespace audrel::macos {
namespace {

class DeclarationsTest : public MacTest {};

#define AUDREL_DECLARED(statement)      \
  TEST_F(DeclarationsTest, statement) { \
    EXPECT_TRUE(declared::statement()); \
  }

AUDREL_DECLARED(bytesOfAStringOutliveItsLastReference)
AUDREL_DECLARED(thePathOfAURLOutlivesIt)
AUDREL_DECLARED(aLogIsItsCreatorsAlone)
AUDREL_DECLARED(aQueueIsItsCreatorsAlone)
AUDREL_DECLARED(aSourceIsItsCreatorsAlone)
AUDREL_DECLARED(aReferenceThatIsBridgedOverIsTakenOver)
AUDREL_DECLARED(theTargetOfAnItemIsWeak)
AUDREL_DECLARED(theDelegateOfAMenuIsWeak)
AUDREL_DECLARED(theDelegateOfTheApplicationIsWeak)
AUDREL_DECLARED(theTitleOfAButtonIsACopy)
AUDREL_DECLARED(theMessageOfAnAlertIsACopy)
AUDREL_DECLARED(theInformationOfAnAlertIsACopy)
AUDREL_DECLARED(theNameOfATapIsACopy)
AUDREL_DECLARED(theUUIDOfATapIsACopy)
AUDREL_DECLARED(theProcessesOfATapAreACopy)

#undef AUDREL_DECLARED

}  // namespace
}  // namespace audrel::macos
