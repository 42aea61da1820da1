#include "cli/Table.h"

#include <wchar.h>

#include <algorithm>
#include <iterator>
#include <numeric>

#include "platform/Utf8.h"

namespace audrel::cli {

namespace {

constexpr std::size_t columnGap = 2;

using Widths = std::vector<std::size_t>;

Widths widthsOf(const std::vector<Row>& rows) {
  Widths widths(rows.empty() ? 0 : rows.front().size());
  for (const auto& row : rows) {
    for (std::size_t column = 0; column < widths.size(); ++column) {
      widths[column] = std::max(widths[column], displayWidth(row[column]));
    }
  }
  return widths;
}

void fitInto(Widths& widths, std::size_t fixed, std::size_t room) {
  const auto gaps = (widths.size() - 1) * columnGap;
  const auto flexible = std::next(widths.begin(), static_cast<std::ptrdiff_t>(fixed));
  while (std::accumulate(widths.begin(), widths.end(), gaps) > room) {
    const auto widest = std::max_element(flexible, widths.end());
    if (*widest <= 1) {
      return;
    }
    --*widest;
  }
}

std::string lineOf(const Row& row, const Widths& widths) {
  std::string line;
  std::size_t spaces = 0;
  for (std::size_t column = 0; column < widths.size(); ++column) {
    const auto text = cutToWidth(row[column], widths[column]);
    line.append(spaces, ' ').append(text);
    spaces = widths[column] - displayWidth(text) + columnGap;
  }
  return line;
}

}  // namespace

std::size_t displayWidth(std::string_view text) {
  std::size_t width = 0;
  while (!text.empty()) {
    const auto [point, size] = firstCharacter(text);
    const int columns = wcwidth(static_cast<wchar_t>(point.value_or(U' ')));
    width += columns < 0 ? 1 : static_cast<std::size_t>(columns);
    text.remove_prefix(size);
  }
  return width;
}

std::string cutToWidth(std::string_view text, std::size_t width) {
  if (displayWidth(text) <= width) {
    return std::string(text);
  }
  std::size_t end = 0;
  while (end < text.size()) {
    const auto next = end + firstCharacter(text.substr(end)).size;
    if (displayWidth(text.substr(0, next)) + 1 > width) {
      break;
    }
    end = next;
  }
  return std::string(text.substr(0, end)) + "…";
}

std::string tableOf(const std::vector<Row>& rows, std::size_t fixed, std::optional<int> width) {
  auto widths = widthsOf(rows);
  std::size_t widest = std::string::npos;
  if (width.has_value()) {
    widest = static_cast<std::size_t>(std::max(*width, 1));
    fitInto(widths, fixed, widest);
  }
  std::string table;
  for (const auto& row : rows) {
    table += cutToWidth(lineOf(row, widths), widest) + "\n";
  }
  return table;
}

}  // namespace audrel::cli
