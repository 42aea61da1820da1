#include "cli/SourceChooser.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <optional>
#include <system_error>

#include "platform/Foundation.h"
#include "platform/Printable.h"
#include "platform/Utf8.h"

namespace audrel::cli {

namespace {

using Matches = std::vector<Recordable>;

std::optional<std::uint32_t> wholeNumber(std::string_view text) {
  std::uint32_t number = 0;
  const auto* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number);
  if (result.ec != std::errc{} || result.ptr != end) {
    return std::nullopt;
  }
  return number;
}

Matches matchesAmong(const std::vector<Recordable>& processes,
                     const std::function<bool(const Recordable&)>& isMeant) {
  Matches matches;
  std::ranges::copy_if(processes, std::back_inserter(matches), isMeant);
  return matches;
}

Matches matchesByID(const Platform& platform, std::string_view who) {
  if (who.starts_with('#')) {
    const auto id = wholeNumber(who.substr(1));
    return matchesAmong(allProcesses(platform),
                        [id](const Recordable& it) { return it.process.id == id; });
  }
  const auto pid = wholeNumber(who);
  if (!pid.has_value()) {
    return {};
  }
  return matchesAmong(allProcesses(platform), [pid](const Recordable& it) {
    return static_cast<std::uint32_t>(it.pid) == *pid;
  });
}

/// Whether a run of characters in `name` is what `isMeant` says.
bool hasPart(std::string_view name, const std::function<bool(std::string_view)>& isMeant) {
  for (auto rest = name; !rest.empty(); rest.remove_prefix(firstCharacter(rest).size)) {
    for (std::size_t size = 0; size < rest.size();) {
      size += firstCharacter(rest.substr(size)).size;
      if (isMeant(rest.substr(0, size))) {
        return true;
      }
    }
  }
  return false;
}

Matches matchesByName(const Platform& platform, const std::vector<Recordable>& listed,
                      std::string_view who) {
  auto exact = matchesAmong(listed, [who](const Recordable& it) {
    return it.process.name == who || it.process.bundleID == who;
  });
  if (!exact.empty()) {
    return exact;
  }
  const auto equal = [&](std::string_view text) {
    return platform.collation.localizedCaseInsensitiveCompare(text, who) ==
           NS::ComparisonResult::orderedSame;
  };
  auto whole = matchesAmong(listed, [&equal](const Recordable& it) {
    return equal(it.process.name) ||
           (it.process.bundleID.has_value() && equal(*it.process.bundleID));
  });
  if (!whole.empty()) {
    return whole;
  }
  return matchesAmong(listed,
                      [&equal](const Recordable& it) { return hasPart(it.process.name, equal); });
}

NoSource nothingMeant(std::string_view who, std::vector<Recordable> listed) {
  const auto name = "\"" + printable(who) + "\"";
  if (listed.empty()) {
    return {name +
                " is not playing: no application has an audio stream open. Start its playback "
                "first, or leave --app out to record everything.",
            {}};
  }
  return {name + " is no application that can be recorded. There are:", std::move(listed)};
}

}  // namespace

std::variant<Recordable, NoSource> chooseProcess(const Platform& platform, std::string_view who) {
  auto matches = matchesByID(platform, who);
  if (matches.empty()) {
    auto listed = listedProcesses(platform);
    matches = matchesByName(platform, listed, who);
    if (matches.empty()) {
      return nothingMeant(who, std::move(listed));
    }
  }
  if (matches.size() > 1) {
    return NoSource{"\"" + printable(who) +
                        "\" may be any of these; give the id of one, as in --app '" + "#" +
                        std::to_string(matches.front().process.id) + "':",
                    std::move(matches)};
  }
  return matches.front();
}

}  // namespace audrel::cli
