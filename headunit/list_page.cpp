#include "list_page.h"

#include "ipodctl.h"
#include "screen_text.h"

namespace {

constexpr int kRows = 6;
constexpr int kMostRowsWithoutName = 2;

/// Returns whether a tab's label has both names. Without one of them it begins or ends with the
/// separator.
bool isWholeLabel(const std::string& label) {
  const std::string joint = " - ";
  return label.size() > joint.size() && label.find(joint) != 0 &&
         label.rfind(joint) != label.size() - joint.size();
}

bool showsTabs() { return IpodIsTabVisualizationActive() != 0 && IpodIsPlayAll() == 0; }

std::string currentName() {
  TextBuffer text;
  IpodGetItemName(0, text.units(), nullptr, TextBuffer::kSize);
  return text.text();
}

/// Reads a label. The library requests its names in one call, without a pause between the answers,
/// so a label is accepted when it is the same twice.
bool readLabel(std::string& label) {
  label = currentName();
  return isWholeLabel(label) && currentName() == label;
}

/// Reads the current entry's name. Returns false, with the name "(no name)", when the iPod does not
/// send it.
bool readName(Conversation& ipod, std::string& name) {
  const bool hasCome = ipod.ask([&] {
    if (showsTabs()) return readLabel(name);
    name = currentName();
    return !name.empty();
  });
  if (!hasCome) name = "(no name)";
  return hasCome;
}

/// Shows a few entries from the current one on, and returns to it.
void showPage(HeadUnit& headUnit, const int* index) {
  const int first = *index;
  int steps = 0;
  int withoutName = 0;
  do {
    std::string name;
    if (!readName(headUnit.ipod, name)) ++withoutName;
    if (headUnit.ipod.isLost()) return;
    headUnit.screen.show(name);
    IpodGetNextItem();
    ++steps;
  } while (*index != first && steps < kRows && withoutName < kMostRowsWithoutName);
  if (withoutName == kMostRowsWithoutName) {
    headUnit.showGap("The iPod does not send the names of this list.");
  } else if (*index != first) {
    headUnit.screen.show("...");
  }
  for (; *index != first && steps > 0; --steps)
    IpodGetPrevItem();
}

/// Shows the tabs, and selects the first one.
void showTabs(HeadUnit& headUnit, const int* index) {
  headUnit.screen.show("in tabs:");
  showPage(headUnit, index);
  if (headUnit.ipod.isLost()) return;
  if (IpodIsPlayAll() != 0) IpodGetNextItem();
  headUnit.screen.show("the first tab:");
  IpodDisableTabVisualizationActive();
}

}  // namespace

void showList(HeadUnit& headUnit, const int* index) {
  if (IpodIsTabVisualizationActive() != 0) showTabs(headUnit, index);
  if (headUnit.ipod.isLost()) return;
  showPage(headUnit, index);
  if (IpodIsPlayAll() != 0) IpodGetNextItem();
}

std::string nameOfEntry(Conversation& ipod) {
  std::string name;
  readName(ipod, name);
  return name;
}
