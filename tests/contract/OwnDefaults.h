#pragma once

namespace audrel::contract {

/// Removes all user defaults of the program that runs, which a test program leaves behind
/// otherwise: the system keeps a file for each program that ever set one.
void removeOwnDefaults();

}  // namespace audrel::contract
