#!/usr/bin/env python3
"""What changes of a source are found: exactly these, under these names."""

import pathlib
import sys
import unittest

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
import changes  # noqa: E402

SAMPLE = r'''#include "a/B.h"

namespace audrel {
namespace {

// if (a == 1) { "no"; }
constexpr int limit = 1'000;  /* x < 2 */
static_assert(limit == 1'000);
enum class Kind { one = 1 };

template <typename T>
std::vector<T> made(const std::vector<std::vector<T>>& from, T&& one) {
  std::vector<T> all{from};
  all.insert(all.end(), 0x0F);
  return all;
}

}  // namespace

struct Box::Inner final : Base {
  bool operator()(int a) const { return a < 7 && !isEmpty; }
  Inner(const Inner&) = delete;
  int size = 2;
};

Box::Box(int width) : width_(width), height_{width} {
  draw();
  width_ = std::min(width, 'x');
}

Box::~Box() {
  if (const auto open = file(); open || first) {
    close();
  }
  for (int i = 0; i != count; ++i) {
    Box& box = at(i);
    box.text = i > 0 ? "a" + last : R"(raw "b")";
  }
  if (auto* next = link()) {
    next->go([this] { stop(); });
  }
}

Box Box::operator-(const Box& other) const {
  while (!done()) {
    step(1.5);
  }
  return Box(left - Width{1} * (other.left));
}

}  // namespace audrel
'''

EXPECTED = '''limit | constant | 1'000 -> 1001
made | dropped statement | all.insert(all.end(), 0x0F); -> ;
made | constant | 0x0F -> 16
Box::Inner::operator() | comparison | < -> <=
Box::Inner::operator() | constant | 7 -> 8
Box::Inner::operator() | comparison | && -> ||
Box::Inner::operator() | condition | ! -> 
Box::Inner::size | constant | 2 -> 3
Box::Box | dropped statement | draw(); -> ;
Box::Box | swapped statements | draw(); width_ = std::min(width, 'x'); -> width_ = std::min(width, 'x'); draw();
Box::Box | dropped statement | width_ = std::min(width, 'x'); -> ;
Box::Box | swapped call | min -> max
Box::Box | constant | 'x' -> '?'
Box::~Box | condition | open || first -> !(open || first)
Box::~Box | comparison | || -> &&
Box::~Box | dropped statement | close(); -> ;
Box::~Box | constant | 0 -> 1
Box::~Box | comparison | != -> ==
Box::~Box | dropped statement | box.text = i > 0 ? "a" + last : R"(raw "b")"; -> ;
Box::~Box | comparison | > -> >=
Box::~Box | constant | 0 -> 1
Box::~Box | condition | ? -> || true ?
Box::~Box | text | "a" -> "a~"
Box::~Box | text | R"(raw "b")" -> R"(raw "b"~)"
Box::~Box | condition | auto* next = link() -> auto* next = link(); !next
Box::~Box | dropped statement | next->go([this] { stop(); }); -> ;
Box::~Box | dropped statement | stop(); -> ;
Box::operator- | condition | !done() -> !(!done())
Box::operator- | condition | ! -> 
Box::operator- | dropped statement | step(1.5); -> ;
Box::operator- | constant | 1.5 -> (1.5 + 1)
Box::operator- | arithmetic | - -> +
Box::operator- | constant | 1 -> 2
Box::operator- | arithmetic | * -> /
'''


class ChangesTest(unittest.TestCase):
    maxDiff = None

    def test_the_changes_of_a_sample_are_exactly_these(self):
        found = "".join(
            f"{change.function} | {change.kind} | {' '.join(SAMPLE[change.start:change.end].split())}"
            f" -> {' '.join(change.replacement.split())}\n" for change in changes.changes_of(SAMPLE))
        self.assertEqual(found, EXPECTED)

    def test_a_change_leaves_the_rest_of_the_source_as_it_is(self):
        change = next(iter(changes.changes_of(SAMPLE)))
        self.assertEqual(change.applied(SAMPLE), SAMPLE.replace("1'000;", "1001;", 1))


if __name__ == "__main__":
    unittest.main()
