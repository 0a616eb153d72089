#pragma once
// Replacing a file the user keeps (settings, waypoints) so that a crash or a full disk at any
// moment leaves either the old contents or the new, never a mixture or an empty file.
#include <filesystem>
#include <string_view>

namespace orvel {

// Called with the finished, synced temporary file just before it replaces the target.
// Tests pass one that kills the process, to stand in for a crash at the worst moment.
using BeforeReplaceHook = void (*)(const std::filesystem::path& temporary);

// Writes `bytes` to a new temporary file beside `target`, syncs it, renames it over `target`
// and syncs the folder. An existing target keeps its permission bits. Returns false, with
// the target untouched and no temporary left behind, when any step before the rename fails.
// Temporaries of the target left by writers that died before their rename go first.
bool writeFileAtomically(const std::filesystem::path& target, std::string_view bytes,
                         BeforeReplaceHook beforeReplace = nullptr);

}  // namespace orvel
