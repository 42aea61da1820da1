// The least that a C++ program does.

#include <iostream>

int main() {
  std::cout << "a line\n";
}
