// The about box InfoBox: caption, program title, version line, and a text
// label to which every click appends the free-resource figures.
//
// The free-memory figure is MemAvailable of /proc/meminfo (else MemFree, else
// sysinfo()). The system, GDI and user heap percentages have no counterpart on
// Linux; their lines say "No Information Available".
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace quelo {

class InfoBox {
 public:
  // meminfo_path: where the kernel's memory figures are read (tests point it
  // at a file of their own).
  explicit InfoBox(std::string meminfo_path = "/proc/meminfo");

  static constexpr const char* kCaption = "About KIVO 4.0";
  static constexpr const char* kTitle = "Quelo";
  static constexpr const char* kNoInformation = "No Information Available";

  const std::string& Caption() const { return caption_; }
  const std::string& Title() const { return title_; }
  const std::string& VersionLine() const { return version_line_; }
  // The text label under the title; grows with each click.
  const std::string& Info_Lbl() const { return info_; }

  // A click on the text label: appends one line per figure.
  void Info_Lbl_Click();

  // Free memory in kilobytes, or nothing when no figure can be had.
  std::optional<std::uint64_t> FreeMemoryKB() const;

 private:
  std::string meminfo_path_;
  std::string caption_ = kCaption;
  std::string title_ = kTitle;
  std::string version_line_;
  std::string info_;
};

// 12345678 -> "12,345,678".
std::string GroupThousands(std::uint64_t value);

}  // namespace quelo
