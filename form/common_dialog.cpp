#include "form/common_dialog.h"

#include <vector>

namespace quelo {
namespace {

std::vector<std::string> Split(const std::string& text, char sep) {
  std::vector<std::string> parts;
  std::string::size_type start = 0;
  while (true) {
    const auto end = text.find(sep, start);
    parts.push_back(text.substr(start, end - start));
    if (end == std::string::npos) return parts;
    start = end + 1;
  }
}

std::string FltkPattern(const std::string& classic) {
  std::vector<std::string> patterns;
  for (auto& p : Split(classic, ';')) {
    if (p.empty()) continue;
    patterns.push_back(p == "*.*" ? "*" : p);
  }
  if (patterns.empty()) return "*";
  if (patterns.size() == 1) return patterns[0];
  std::string joined = "{";
  for (std::size_t i = 0; i < patterns.size(); ++i) {
    if (i > 0) joined += ',';
    joined += patterns[i];
  }
  return joined + "}";
}

// FLTK's choosers show each pattern after its description themselves, so a
// description that already ends in its patterns ("KIVO OpenGL File (*.qgl)")
// loses that ending rather than showing it twice.
std::string WithoutPatternSuffix(const std::string& description) {
  const auto open = description.rfind(" (");
  if (open == std::string::npos || description.back() != ')') return description;
  const std::string inside = description.substr(open + 2, description.size() - open - 3);
  if (inside.find_first_of("*?") == std::string::npos) return description;
  return description.substr(0, open);
}

}  // namespace

std::string FltkFilterFromClassic(const std::string& filter) {
  if (filter.empty()) return "";
  const auto parts = Split(filter, '|');
  std::string out;
  for (std::size_t i = 0; i + 1 < parts.size(); i += 2) {
    if (!out.empty()) out += '\n';
    // FLTK splits on tabs and newlines; keep them out of the description.
    std::string description = parts[i];
    for (auto& c : description) {
      if (c == '\t' || c == '\n') c = ' ';
    }
    out += WithoutPatternSuffix(description) + '\t' + FltkPattern(parts[i + 1]);
  }
  return out;
}

}  // namespace quelo
