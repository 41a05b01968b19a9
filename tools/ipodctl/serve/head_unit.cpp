#include "ipodctl/serve/head_unit.h"

#include <desk.h>
#include <ipodctl.h>
#include <isochplay_desk.h>

#include <algorithm>
#include <utility>

#include "ipodctl/serve/console.h"
#include "ipodctl/serve/event_log.h"
#include "ipodctl/serve/ipod_text.h"
#include "ipodctl/serve/worker.h"

namespace tool {
namespace {

using nlohmann::json;

constexpr int kMostItems = 100;
/// The names that are read before the worker looks for a more urgent request.
constexpr size_t kNamesOfAPart = 8;
constexpr size_t kLabelCharacters = 4;

[[noreturn]] void refuseRequest(const std::string& code, const std::string& message) {
  throw Refused{Refusal::kBadRequest, code, message};
}

ListPath pathIn(const std::string& text) {
  const std::optional<ListPath> path = parseListPath(text);
  if (!path) {
    throw Refused{Refusal::kNoSuchList, "no-such-list",
                  "There is no list " + text + "; a path is like artists/3/albums."};
  }
  return *path;
}

/// Calls `work`, which returns the document of the client.
template <class Work>
Outcome outcomeOf(Work work) {
  Outcome outcome;
  try {
    outcome.result = work();
  } catch (const Refused& refused) {
    outcome.refusal = refused.refusal;
    outcome.code = refused.code;
    outcome.message = refused.message;
  } catch (const NotWanted&) {
    outcome.refusal = Refusal::kNoAnswer;
    outcome.code = "not-wanted";
    outcome.message = "The client has gone. Ask again.";
  }
  return outcome;
}

/// Part of a list: the items from one on.
struct Range {
  int offset;
  int count;
};

Range rangeIn(const ListRequest& request, int count) {
  if (request.offset < 0 || request.count < 0 || request.count > kMostItems) {
    refuseRequest("bad-range", "The offset is at least 0, the count 0 to 100. Correct them.");
  }
  const int offset = std::min(request.offset, count);
  return {offset, std::min(request.count, count - offset)};
}

int tabsOf(int count) { return (count + kItemsOfATab - 1) / kItemsOfATab; }

int lastOfTab(int tab, int count) { return std::min((tab + 1) * kItemsOfATab, count) - 1; }

json aboveOf(const ListPath& path, const ListFacts& facts) {
  json above = json::array();
  for (size_t i = 1; i < path.size(); ++i) {
    const bool isPlayAll = path[i].index == kPlayAllIndex;
    above.push_back({{"path", textOf(ListPath(path.begin(), path.begin() + static_cast<long>(i)))},
                     {"index", isPlayAll ? json("all") : json(path[i].index)},
                     {"name", isPlayAll ? json(nullptr) : json(facts.above[i - 1])}});
  }
  return above;
}

/// The implementation of HeadUnit.
class WorkingHeadUnit : public HeadUnit {
 public:
  WorkingHeadUnit(EventLog& log, const HeadUnitOptions& options);
  ~WorkingHeadUnit() override;

  json state() const override;
  Outcome list(const ListRequest& request, const Wanted& isWanted) override;
  Outcome tabs(const ListRequest& request, const Wanted& isWanted) override;
  Outcome play(const PlayRequest& request, const Wanted& isWanted) override;
  Outcome command(const std::string& name, const Wanted& isWanted) override;
  Outcome setModes(const std::string& shuffle, const std::string& repeat,
                   const Wanted& isWanted) override;
  Outcome setLogo(const std::string& bitmap, const Wanted& isWanted) override;
  Outcome reconnect(const Wanted& isWanted) override;

 private:
  void receiveFromLibrary();
  void ensureReady(uint64_t generation) const;
  void ensureGeneration(uint64_t generation) const;
  ListFacts factsOf(const ListPath& path, uint64_t generation, const Wanted& isWanted);
  void fetchNames(const ListPath& path, std::vector<int> indexes, uint64_t generation,
                  const Wanted& isWanted);
  json listDocument(const ListRequest& request, const Wanted& isWanted);
  json tabsDocument(const ListRequest& request, const Wanted& isWanted);
  json itemsOf(const ListPath& path, const ListFacts& facts, const Range& range);
  json labelOf(const ListPath& path, const ListFacts& facts, int tab);
  template <class Work>
  Outcome carryOut(const Wanted& isWanted, bool needsIpod, Work work);

  EventLog& events;
  Console console;
  StateBoard board;
  NameStore store;
  Worker worker;
};

WorkingHeadUnit::WorkingHeadUnit(EventLog& log, const HeadUnitOptions& options)
    : events(log), console(log), board(log), worker(board, store, options.folder) {
  receiveFromLibrary();
  worker.start();
}

/// The library's calls must not reach this object any more.
WorkingHeadUnit::~WorkingHeadUnit() {
  deskSetMessageSink(nullptr, nullptr);
  isochplaySetSink([](void*, const IsochplayCall*) {}, nullptr);
}

void WorkingHeadUnit::receiveFromLibrary() {
  deskSetMessageSink(
      [](void* context, HWND, UINT message, WPARAM, LPARAM) {
        auto* const self = static_cast<WorkingHeadUnit*>(context);
        if (message != WM_IPOD_NOTIFY) return;
        self->worker.refresh();
        self->events.publish(Topic::kRefresh, "{}");
      },
      this);
  isochplaySetSink(
      [](void* context, const IsochplayCall* call) {
        auto* const self = static_cast<WorkingHeadUnit*>(context);
        if (call->function == kSelectFrequency) self->board.setSampleRate(call->sampleRate);
        if (call->function == kStartIpodAudioPlay && call->format != nullptr) {
          self->board.setSampleRate(static_cast<int>(call->format->nSamplesPerSec));
        }
      },
      this);
}

json WorkingHeadUnit::state() const { return json::parse(board.json()); }

void WorkingHeadUnit::ensureReady(uint64_t generation) const {
  const Stage stage = board.stage();
  if (stage != Stage::kReady && stage != Stage::kOdd) {
    throw Refused{Refusal::kNoIpod, "no-ipod", "No iPod is ready. Plug one in, then ask again."};
  }
  ensureGeneration(generation);
}

void WorkingHeadUnit::ensureGeneration(uint64_t generation) const {
  if (generation == board.generation()) return;
  throw Refused{Refusal::kStaleGeneration, "stale-generation",
                "The iPod was connected again since. Read the state, and begin with its lists."};
}

template <class Work>
Outcome WorkingHeadUnit::carryOut(const Wanted& isWanted, bool needsIpod, Work work) {
  return outcomeOf([&] {
    const auto once = [&] {
      work();
      return true;
    };
    worker.jobs().carryOut({once, isWanted, Urgency::kPlayback, needsIpod});
    return json{{"ok", true}};
  });
}

Outcome WorkingHeadUnit::list(const ListRequest& request, const Wanted& isWanted) {
  return outcomeOf([&] { return listDocument(request, isWanted); });
}

Outcome WorkingHeadUnit::tabs(const ListRequest& request, const Wanted& isWanted) {
  return outcomeOf([&] { return tabsDocument(request, isWanted); });
}

/// What is known is answered while the worker is busy.
ListFacts WorkingHeadUnit::factsOf(const ListPath& path, uint64_t generation,
                                   const Wanted& isWanted) {
  ensureReady(generation);
  if (std::optional<ListFacts> known = store.facts(textOf(path))) return *known;
  ListFacts facts;
  const auto part = [&] {
    ensureGeneration(generation);
    board.setWaitingFor("the list's count");
    facts = worker.browser().facts(path, isWanted);
    return true;
  };
  worker.jobs().carryOut({part, isWanted});
  return facts;
}

/// Fetches the names that are not known, a few at a time.
void WorkingHeadUnit::fetchNames(const ListPath& path, std::vector<int> indexes,
                                 uint64_t generation, const Wanted& isWanted) {
  const std::string text = textOf(path);
  const auto isKnown = [&](int index) { return store.name(text, index).has_value(); };
  const auto forgetKnown = [&] {
    indexes.erase(std::remove_if(indexes.begin(), indexes.end(), isKnown), indexes.end());
  };
  const auto part = [&] {
    ensureGeneration(generation);
    forgetKnown();
    board.setWaitingFor("the names of a list");
    const size_t size = std::min(kNamesOfAPart, indexes.size());
    if (size > 0) {
      const auto first = indexes.begin();
      worker.browser().readNames(path, {first, first + static_cast<long>(size)}, isWanted);
    }
    forgetKnown();
    return indexes.empty();
  };
  forgetKnown();
  if (!indexes.empty()) worker.jobs().carryOut({part, isWanted});
}

json WorkingHeadUnit::listDocument(const ListRequest& request, const Wanted& isWanted) {
  const ListPath path = pathIn(request.path);
  const ListFacts facts = factsOf(path, request.generation, isWanted);
  const Range range = rangeIn(request, facts.count);
  std::vector<int> indexes;
  indexes.reserve(static_cast<size_t>(range.count));
  for (int i = 0; i < range.count; ++i)
    indexes.push_back(facts.first + range.offset + i);
  fetchNames(path, indexes, request.generation, isWanted);
  json items = itemsOf(path, facts, range);
  ensureGeneration(request.generation);
  return {{"generation", request.generation}, {"path", textOf(path)},
          {"type", nameOf(path.back())},      {"count", facts.count},
          {"play_all", facts.hasPlayAll},     {"tabbed", facts.isTabbed},
          {"offset", range.offset},           {"items", std::move(items)},
          {"above", aboveOf(path, facts)}};
}

json WorkingHeadUnit::itemsOf(const ListPath& path, const ListFacts& facts, const Range& range) {
  const std::string text = textOf(path);
  const std::vector<std::string> opens = openedBy(path.back().type);
  json items = json::array();
  for (int i = 0; i < range.count; ++i) {
    const int index = facts.first + range.offset + i;
    items.push_back(
        {{"index", index}, {"name", store.name(text, index).value_or("")}, {"opens", opens}});
  }
  return items;
}

json WorkingHeadUnit::tabsDocument(const ListRequest& request, const Wanted& isWanted) {
  const ListPath path = pathIn(request.path);
  const ListFacts facts = factsOf(path, request.generation, isWanted);
  const int count = facts.isTabbed ? tabsOf(facts.count) : 0;
  const Range range = rangeIn(request, count);
  std::vector<int> indexes;
  for (int tab = range.offset; tab < range.offset + range.count; ++tab) {
    indexes.push_back(facts.first + tab * kItemsOfATab);
    indexes.push_back(facts.first + lastOfTab(tab, facts.count));
  }
  fetchNames(path, indexes, request.generation, isWanted);
  json tabs = json::array();
  for (int tab = 0; tab < count; ++tab) {
    const int first = tab * kItemsOfATab;
    const bool isAsked = tab >= range.offset && tab < range.offset + range.count;
    tabs.push_back({{"tab", tab},
                    {"first", first},
                    {"count", lastOfTab(tab, facts.count) - first + 1},
                    {"label", isAsked ? labelOf(path, facts, tab) : json(nullptr)}});
  }
  ensureGeneration(request.generation);
  return {{"generation", request.generation}, {"path", textOf(path)}, {"tabs", std::move(tabs)}};
}

/// As the library labels its tabs: the beginnings of the first and of the last name.
json WorkingHeadUnit::labelOf(const ListPath& path, const ListFacts& facts, int tab) {
  const auto beginning = [&](int item) {
    return firstCharacters(store.name(textOf(path), facts.first + item).value_or(""),
                           kLabelCharacters);
  };
  return beginning(tab * kItemsOfATab) + " - " + beginning(lastOfTab(tab, facts.count));
}

Outcome WorkingHeadUnit::play(const PlayRequest& request, const Wanted& isWanted) {
  return outcomeOf([&] {
    const ListPath path = pathIn(request.path);
    ensureReady(request.generation);
    const auto part = [&] {
      ensureGeneration(request.generation);
      board.setWaitingFor("the list to play");
      worker.player().play(path, request.index, isWanted);
      worker.askSoon();
      return true;
    };
    worker.jobs().carryOut({part, isWanted, Urgency::kPlayback});
    return json{{"ok", true}};
  });
}

Outcome WorkingHeadUnit::command(const std::string& name, const Wanted& isWanted) {
  const std::optional<int> code = commandNamed(name);
  return carryOut(isWanted, code.has_value(), [&] {
    if (!code) {
      refuseRequest("unknown-command",
                    "There is no command " + name + "; one is play, pause or next-track.");
    }
    board.setWaitingFor("the command");
    worker.player().command(*code, isWanted);
    worker.askSoon();
  });
}

Outcome WorkingHeadUnit::setModes(const std::string& shuffle, const std::string& repeat,
                                  const Wanted& isWanted) {
  const std::optional<int> shuffleMode = shuffle.empty() ? 0 : shuffleNamed(shuffle);
  const std::optional<int> repeatMode = repeat.empty() ? 0 : repeatNamed(repeat);
  return carryOut(isWanted, shuffleMode && repeatMode, [&] {
    if (!shuffleMode || !repeatMode) {
      refuseRequest("unknown-mode",
                    "Shuffle is off, tracks or albums; repeat is off, track or all.");
    }
    board.setWaitingFor("the mode");
    worker.player().setModes(*shuffleMode, *repeatMode);
  });
}

Outcome WorkingHeadUnit::setLogo(const std::string& bitmap, const Wanted& isWanted) {
  return carryOut(isWanted, false, [&] { worker.setLogo(bitmap); });
}

Outcome WorkingHeadUnit::reconnect(const Wanted& isWanted) {
  return carryOut(isWanted, false, [&] { worker.reconnect(); });
}

}  // namespace

std::unique_ptr<HeadUnit> makeHeadUnit(EventLog& events, const HeadUnitOptions& options) {
  return std::make_unique<WorkingHeadUnit>(events, options);
}

}  // namespace tool
