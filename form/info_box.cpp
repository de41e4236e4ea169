#include "form/info_box.h"

#include <sys/sysinfo.h>

#include <fstream>
#include <sstream>

#ifndef QUELO_VERSION
#define QUELO_VERSION "4.0.0"
#endif

namespace quelo {
namespace {

// The value of "Key:   123 kB" in /proc/meminfo format.
std::optional<std::uint64_t> MeminfoField(const std::string& path, const std::string& key) {
  std::ifstream in(path);
  std::string line;
  while (std::getline(in, line)) {
    if (line.compare(0, key.size() + 1, key + ":") != 0) continue;
    std::istringstream fields(line.substr(key.size() + 1));
    std::uint64_t value = 0;
    std::string unit;
    if (!(fields >> value)) return std::nullopt;
    fields >> unit;
    if (unit.empty()) return value / 1024;  // a bare number counts bytes
    return value;
  }
  return std::nullopt;
}

}  // namespace

std::string GroupThousands(std::uint64_t value) {
  std::string digits = std::to_string(value);
  std::string out;
  const auto n = digits.size();
  for (std::size_t i = 0; i < n; ++i) {
    if (i > 0 && (n - i) % 3 == 0) out += ',';
    out += digits[i];
  }
  return out;
}

InfoBox::InfoBox(std::string meminfo_path)
    : meminfo_path_(std::move(meminfo_path)),
      version_line_(std::string("Version ") + QUELO_VERSION),
      info_("Viewer for KIVO OpenGL scene files.\nClick here for the free resources.") {}

std::optional<std::uint64_t> InfoBox::FreeMemoryKB() const {
  // MemAvailable is what a new program can get without swapping; kernels
  // before 3.14 only have MemFree.
  if (auto kb = MeminfoField(meminfo_path_, "MemAvailable")) return kb;
  if (auto kb = MeminfoField(meminfo_path_, "MemFree")) return kb;
  if (std::ifstream(meminfo_path_).good()) return std::nullopt;  // readable, but no figure
  struct sysinfo info {};
  if (sysinfo(&info) != 0) return std::nullopt;
  return static_cast<std::uint64_t>(info.freeram) * info.mem_unit / 1024;
}

void InfoBox::Info_Lbl_Click() {
  const auto memory = FreeMemoryKB();
  info_ += "\nMemory Free: ";
  info_ += memory ? GroupThousands(*memory) + " KB" : kNoInformation;
  for (const char* label : {"System Free: ", "GDI Free: ", "User Free: "}) {
    info_ += "\n";
    info_ += label;
    info_ += kNoInformation;
  }
}

}  // namespace quelo
