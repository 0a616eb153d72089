#pragma once
// The folder that holds Tracks.bin, Waypoints.bin and the recorded .mps files.
#include <filesystem>

namespace orvel {

// "GPS Tracks and Waypoints" in the user's documents folder, or the folder named by the
// environment variable ORVEL_DATA_DIR when it is set and not empty. The folder is created
// (with its parents) when missing; a failure to create it shows later, when a file in it
// cannot be opened.
std::filesystem::path ensureDataFolder();

}  // namespace orvel
