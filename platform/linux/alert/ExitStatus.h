#pragma once

/// How the alert helper answers. Statuses of failing programs and libraries (0, 1, 2, signals) mean
/// nothing, so that no crash passes for an answer.
namespace audrel::alerthelper {

/// And the index of the button that was pressed.
inline constexpr int firstButton = 10;
inline constexpr int mostButtons = 90;

/// The window was closed, or the key Escape pressed.
inline constexpr int closed = 100;

/// There is no display to show anything on.
inline constexpr int noDisplay = 101;

/// The input is not as it should be.
inline constexpr int wrongInput = 102;

}  // namespace audrel::alerthelper
