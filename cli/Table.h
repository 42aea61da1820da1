#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace audrel::cli {

/// How many columns of a terminal `text` takes, which must be safe for one: East Asian characters
/// and pictures take two, marks on others none. All take one where the locale of `LC_CTYPE` is not
/// UTF-8.
std::size_t displayWidth(std::string_view text);

/// `text`, or its beginning and "…", within `width` columns; one at least.
std::string cutToWidth(std::string_view text, std::size_t width);

using Row = std::vector<std::string>;

/// Lines of aligned columns, of rows that are equally long. In a window of `width` columns the
/// columns after the first `fixed` get narrower, the widest first, and no line is longer.
std::string tableOf(const std::vector<Row>& rows, std::size_t fixed, std::optional<int> width);

}  // namespace audrel::cli
