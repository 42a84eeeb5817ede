// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/MemoryRoom.h"

#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <sstream>

#include "core/TextForm.h"

namespace lumo {

namespace {

constexpr std::uint64_t kKib = 1024;

/// The number behind `name` in a file of "name number" lines; false where there is none.
bool lookUp(const std::string& path, const std::string& name, std::uint64_t& value) {
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    std::istringstream words(line);
    std::string first;
    if (words >> first && first == name) return static_cast<bool>(words >> value);
  }
  return false;
}

/// A file of one number; false for "max" and where there is none.
bool readNumber(const std::string& path, std::uint64_t& value) {
  std::ifstream file(path);
  return static_cast<bool>(file >> value);
}

void lower(MemoryRoom& room, std::uint64_t most, const char* is) {
  if (most >= room.most) return;
  room.most = most;
  room.mostIs = is;
}

/// Names of one version of control groups.
struct GroupFiles {
  const char* folder;
  const char* limit;
  const char* usage;
  const char* inactive;  ///< the line of memory.stat with what the system can take back
};

constexpr GroupFiles kUnified{"/sys/fs/cgroup", "/memory.max", "/memory.current", "inactive_file"};
constexpr GroupFiles kOfMemory{"/sys/fs/cgroup/memory", "/memory.limit_in_bytes", "/memory.usage_in_bytes",
                               "total_inactive_file"};

void askGroup(const std::string& folder, const GroupFiles& files, std::uint64_t swap, MemoryRoom& room) {
  std::uint64_t limit = 0;
  if (!readNumber(folder + files.limit, limit)) return;
  std::uint64_t groupSwap = swap;
  if (std::uint64_t set = 0; readNumber(folder + "/memory.swap.max", set)) groupSwap = std::min(swap, set);
  if (limit < MemoryRoom::kUnknown - groupSwap)
    lower(room, limit + groupSwap, "the limit of this process's control group");
  std::uint64_t used = 0;
  if (!readNumber(folder + files.usage, used)) return;
  std::uint64_t inactive = 0;
  if (lookUp(folder + "/memory.stat", files.inactive, inactive)) used -= std::min(used, inactive);
  room.free = std::min(room.free, limit - std::min(limit, used));
}

/// A group and those it lies in: the limit of any holds for all below. Seen from a container, the group's own
/// folder may be the mounted one.
void askGroups(const std::string& root, const GroupFiles& files, std::string group, std::uint64_t swap,
               MemoryRoom& room) {
  while (!group.empty() && group.back() == '/') group.pop_back();
  for (;;) {
    std::string folder = root;
    folder += files.folder;
    folder += group;
    askGroup(folder, files, swap, room);
    if (group.empty()) return;
    group.resize(std::min(group.rfind('/'), group.size() - 1));
  }
}

void askControlGroups(const std::string& root, std::uint64_t swap, MemoryRoom& room) {
  std::ifstream file(root + "/proc/self/cgroup");
  // Lines "number:controllers:/path", the controllers empty for the unified hierarchy.
  for (std::string line; std::getline(file, line);) {
    const std::size_t first = line.find(':');
    const std::size_t second = line.find(':', first + 1);
    if (first == std::string::npos || second == std::string::npos) continue;
    const std::string controllers = "," + line.substr(first + 1, second - first - 1) + ",";
    const std::string group = line.substr(second + 1);
    if (controllers == ",,") askGroups(root, kUnified, group, swap, room);
    if (controllers.find(",memory,") != std::string::npos) askGroups(root, kOfMemory, group, swap, room);
  }
}

void askProcess(MemoryRoom& room) {
  for (const auto& [resource, is] :
       {std::pair{RLIMIT_AS, "this process's limit on its address space (ulimit -v)"},
        std::pair{RLIMIT_DATA, "this process's limit on its data (ulimit -d)"}}) {
    rlimit limit{};
    if (::getrlimit(resource, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY)
      lower(room, limit.rlim_cur, is);
  }
}

}  // namespace

MemoryRoom memoryRoom(const std::string& root) {
  MemoryRoom room;
  const std::string facts = root + "/proc/meminfo";
  std::uint64_t total = 0;
  std::uint64_t swap = 0;
  std::uint64_t available = 0;
  if (lookUp(facts, "SwapTotal:", swap)) swap *= kKib;
  if (lookUp(facts, "MemTotal:", total))
    lower(room, total * kKib + swap,
          swap > 0 ? "the memory and swap space of this machine" : "the memory of this machine");
  if (lookUp(facts, "MemAvailable:", available)) room.free = available * kKib;
  askControlGroups(root, swap, room);
  if (root.empty()) askProcess(room);
  return room;
}

std::string bytesText(std::uint64_t bytes) {
  constexpr std::array<const char*, 5> kUnits = {"B", "kB", "MB", "GB", "TB"};
  auto value = static_cast<double>(bytes);
  std::size_t unit = 0;
  // 999.5 would be written as 1e+03.
  for (; value >= 999.5 && unit + 1 < kUnits.size(); ++unit) value /= 1000;
  return formatted("%.3g ", value) + kUnits[unit];
}

}  // namespace lumo
