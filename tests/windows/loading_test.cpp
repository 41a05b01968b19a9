// Loads and unloads ipodctl.dll again and again; nothing of it remains.

#include <windows.h>

#include <gtest/gtest.h>
#include <tlhelp32.h>

namespace {

constexpr int kRounds = 1000;
constexpr wchar_t kLibrary[] = L"ipodctl.dll";

DWORD openHandles() {
  DWORD count = 0;
  EXPECT_TRUE(GetProcessHandleCount(GetCurrentProcess(), &count));
  return count;
}

DWORD runningThreads() {
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 entry = {};
  entry.dwSize = sizeof entry;
  DWORD count = 0;
  for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry))
    count += entry.th32OwnerProcessID == GetCurrentProcessId() ? 1 : 0;
  CloseHandle(snapshot);
  return count;
}

/// Calls a function of the library without arguments, by its undecorated name.
int call(HMODULE library, const char* name) {
  const auto address = reinterpret_cast<void (*)()>(GetProcAddress(library, name));
  return address != nullptr ? reinterpret_cast<int(WINAPI*)()>(address)() : -1;
}

void loadAndUnload(void (*use)(HMODULE library)) {
  const HMODULE library = LoadLibraryW(kLibrary);
  ASSERT_NE(library, nullptr) << GetLastError();
  use(library);
  ASSERT_TRUE(FreeLibrary(library));
  ASSERT_EQ(GetModuleHandleW(kLibrary), nullptr) << "it is still loaded";
}

/// Checks that nothing remains. In the first rounds the system makes its permanent objects.
void expectNothingRemains(void (*use)(HMODULE library)) {
  loadAndUnload(use);
  const DWORD handles = openHandles();
  const DWORD threads = runningThreads();
  for (int round = 0; round < kRounds && !testing::Test::HasFatalFailure(); ++round)
    loadAndUnload(use);
  EXPECT_EQ(openHandles(), handles);
  EXPECT_EQ(runningThreads(), threads);
}

TEST(LoadedLibrary, IsUnloadedCompletelyWhenUnused) {
  expectNothingRemains([](HMODULE) {});
}

/// There is no device with the stream driver's name.
TEST(LoadedLibrary, IsUnloadedCompletelyAfterARefusedConnection) {
  expectNothingRemains([](HMODULE library) {
    EXPECT_EQ(call(library, "IpodConnect"), 0);
    EXPECT_EQ(call(library, "IpodIsConnect"), 0);
    EXPECT_EQ(call(library, "IpodDisconnect"), 0);
  });
}

}  // namespace
