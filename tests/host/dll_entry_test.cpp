#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "entry_module/entry_events.h"

namespace {

using Events = std::vector<std::string>;

/// Never destroyed: the module reports its end after the program's static objects were destroyed.
Events& events() {
  static auto& told = *new Events;
  return told;
}

void* loadModule() { return dlopen(ENTRY_MODULE_PATH, RTLD_NOW | RTLD_LOCAL); }

}  // namespace

extern "C" void entryEvent(const char* event) {
  events().emplace_back(event);
  std::fprintf(stderr, "%s; ", event);
}

namespace {

TEST(DllEntry, AttachesAfterAllStaticObjectsAndDetachesBeforeThem) {
  events().clear();
  void* const module = loadModule();
  ASSERT_NE(module, nullptr) << dlerror();
  EXPECT_EQ(events(), (Events{"first built", "second built", "attach"}));
  events().clear();
  EXPECT_EQ(dlclose(module), 0);
  EXPECT_EQ(events(), (Events{"detach", "second destroyed", "first destroyed"}));
}

TEST(DllEntry, DetachesBeforeLaterObjectsAreDestroyed) {
  void* const module = loadModule();
  ASSERT_NE(module, nullptr) << dlerror();
  reinterpret_cast<void (*)()>(dlsym(module, "useLateStatic"))();
  events().clear();
  EXPECT_EQ(dlclose(module), 0);
  EXPECT_EQ(events(), (Events{"detach", "late destroyed", "second destroyed", "first destroyed"}));
}

TEST(DllEntry, AttachesAgainWhenLoadedAgain) {
  for (int round = 0; round < 3; ++round) {
    events().clear();
    dlclose(loadModule());
    EXPECT_EQ(events(), (Events{"first built", "second built", "attach", "detach",
                                "second destroyed", "first destroyed"}));
  }
}

TEST(DllEntryDeathTest, DetachesAtTheEndOfAProcessThatLoadedTheModule) {
  EXPECT_EXIT(
      {
        loadModule();
        std::exit(0);
      },
      testing::ExitedWithCode(0), "attach; detach; second destroyed; first destroyed; $");
}

TEST(DllEntryDeathTest, EndsAProcessThatTheModuleRefuses) {
  EXPECT_DEATH(
      {
        setenv("REFUSE_TO_ATTACH", "1", 1);
        loadModule();
      },
      "attach; DllMain refused");
}

}  // namespace
