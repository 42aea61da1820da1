// expected: undefined symbol: vtable for std::__1::bad_function_call
// What the compiler would take for granted of a newer library than macOS 14.2's.
#define _LIBCPP_HAS_NO_VENDOR_AVAILABILITY_ANNOTATIONS
#include <functional>

int main(int count, char**) {
  std::function<int()> function;
  if (count > 5) {
    function = [] { return 1; };
  }
  return function();
}
