// ipodtrace.dll under Wine, with a device and a card of this program: they replace the functions of
// the system that the DLL imports.

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>
#include <thread>

#include "import_table.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using testing::HasSubstr;
using testing::Not;

constexpr DWORD kDiskFull = ERROR_DISK_FULL;
constexpr milliseconds kSlowWrite{500};
constexpr std::chrono::seconds kPatience{10};

/// What a handle of the device is, and what the device and the card do.
const HANDLE kDevice = reinterpret_cast<HANDLE>(0x5A5A0);
std::atomic<DWORD> deviceError{ERROR_SUCCESS};
std::atomic<bool> cardIsSlow{false};
std::atomic<bool> cardIsFull{false};
std::atomic<int> slowWrites{0};

HANDLE WINAPI openAny(LPCWSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES attributes,
                      DWORD disposition, DWORD flags, HANDLE templateFile) {
  if (std::wcscmp(name, L"IPD1:") != 0)
    return CreateFileW(name, access, share, attributes, disposition, flags, templateFile);
  if (deviceError == ERROR_SUCCESS) return kDevice;
  SetLastError(deviceError);
  return INVALID_HANDLE_VALUE;
}

BOOL WINAPI readAny(HANDLE file, LPVOID buffer, DWORD count, LPDWORD read,
                    LPOVERLAPPED overlapped) {
  if (file != kDevice) return ReadFile(file, buffer, count, read, overlapped);
  constexpr unsigned char kAnswer[] = {0x55, 0x02, 0x00, 0x01, 0xFD};
  *read = std::min<DWORD>(count, sizeof kAnswer);
  std::memcpy(buffer, kAnswer, *read);
  SetLastError(deviceError);
  return deviceError == ERROR_SUCCESS;
}

BOOL WINAPI writeAny(HANDLE file, LPCVOID buffer, DWORD count, LPDWORD written,
                     LPOVERLAPPED overlapped) {
  if (file == kDevice) {
    *written = deviceError == ERROR_SUCCESS ? count : 0;
    SetLastError(deviceError);
    return deviceError == ERROR_SUCCESS;
  }
  if (cardIsSlow) {
    ++slowWrites;
    Sleep(static_cast<DWORD>(kSlowWrite.count()));
  }
  if (!cardIsFull) return WriteFile(file, buffer, count, written, overlapped);
  // The card takes the first bytes.
  WriteFile(file, buffer, std::min<DWORD>(count, 7), written, overlapped);
  SetLastError(kDiskFull);
  return FALSE;
}

BOOL WINAPI closeAny(HANDLE handle) { return handle == kDevice ? TRUE : CloseHandle(handle); }

template <class Condition>
bool eventually(Condition condition) {
  for (const auto end = steady_clock::now() + kPatience; steady_clock::now() < end; Sleep(10))
    if (condition()) return true;
  return false;
}

/// A copy of the recorder in its own folder. It stays loaded once a device was opened.
class RecorderDll : public testing::Test {
 protected:
  RecorderDll() {
    remove_all(folder);
    create_directories(folder);
    copy_file(RECORDER, folder / "ipodtrace.dll");
    deviceError = ERROR_SUCCESS;
    cardIsSlow = cardIsFull = false;
    slowWrites = 0;
  }
  ~RecorderDll() override {
    cardIsSlow = cardIsFull = false;
    // The system removes no file of a loaded DLL; the next run does.
    std::error_code ignored;
    remove_all(folder, ignored);
  }

  void set(const std::string& settings) const { write("ipodtrace.txt", settings); }
  void write(const char* name, const std::string& text) const {
    std::ofstream(folder / name, std::ios::binary) << text;
  }
  std::string text(const char* name = "ipod.trace") const {
    std::ifstream file(folder / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  bool hasText(const std::string& wanted) const {
    return eventually([&] { return text().find(wanted) != std::string::npos; });
  }

  void load() {
    dll = LoadLibraryW((folder / "ipodtrace.dll").c_str());
    ASSERT_NE(dll, nullptr) << GetLastError();
    replaceImport(dll, "CreateFileW", reinterpret_cast<ULONG_PTR>(openAny));
    replaceImport(dll, "ReadFile", reinterpret_cast<ULONG_PTR>(readAny));
    replaceImport(dll, "WriteFile", reinterpret_cast<ULONG_PTR>(writeAny));
    replaceImport(dll, "CloseHandle", reinterpret_cast<ULONG_PTR>(closeAny));
  }
  template <class Function>
  Function* find(Function*, const char* name) const {
    const auto address = reinterpret_cast<void (*)()>(GetProcAddress(dll, name));
    return reinterpret_cast<Function*>(address);
  }

  HANDLE open(const wchar_t* name = L"IPD1:") const {
    return find(&CreateFileW, "CreateFileW")(name, GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                             OPEN_EXISTING, 0, nullptr);
  }
  BOOL read(HANDLE file) const {
    unsigned char bytes[64] = {};
    DWORD count = 0;
    return find(&ReadFile, "ReadFile")(file, bytes, sizeof bytes, &count, nullptr);
  }
  BOOL write(HANDLE file, const std::string& bytes) const {
    DWORD count = 0;
    return find(&WriteFile, "WriteFile")(file, bytes.data(), static_cast<DWORD>(bytes.size()),
                                         &count, nullptr);
  }
  BOOL close(HANDLE file) const { return find(&CloseHandle, "CloseHandle")(file); }

  /// Reads and writes more than a small buffer can have. Returns the longest time of one call.
  milliseconds longestCall(HANDLE device) const {
    milliseconds longest{0};
    for (int i = 0; i < 1000 && longest < kSlowWrite; ++i) {
      const auto begin = steady_clock::now();
      EXPECT_TRUE(read(device) && write(device, "\x55\x01\x02"));
      longest = std::max(longest, std::chrono::ceil<milliseconds>(steady_clock::now() - begin));
    }
    return longest;
  }

  const std::filesystem::path folder =
      std::filesystem::temp_directory_path() /
      (std::string("ipodtrace.") + testing::UnitTest::GetInstance()->current_test_info()->name());
  HMODULE dll = nullptr;
};

/// The lines with 0 in place of each time.
std::string timeless(const std::string& text) {
  return std::regex_replace(text, std::regex("[0-9]+\\.[0-9]{6} "), "0 ");
}

constexpr char kHead[] =
    "# ipodctl-trace 1\n"
    "# It contains the iPod's name and serial number, and the titles of its music.\n"
    "# iaptrace redact FILE replaces them.\n";

TEST_F(RecorderDll, WritesWhatTheProgramReadsAndWrites) {
  load();
  const HANDLE device = open();
  EXPECT_EQ(device, kDevice);
  EXPECT_TRUE(write(device, "\x55\x02\x0A\xFF"));
  EXPECT_TRUE(read(device));
  EXPECT_TRUE(close(device));
  ASSERT_TRUE(hasText(" close\n"));
  EXPECT_EQ(timeless(text()), std::string(kHead) +
                                  "# 0 IPD1: open ok\n"
                                  "0 IPD1: > 55 02 0A FF\n"
                                  "0 IPD1: < 55 02 00 01 FD\n"
                                  "# 0 IPD1: close\n");
}

TEST_F(RecorderDll, WritesFailuresAndKeepsTheirErrors) {
  load();
  const HANDLE device = open();
  deviceError = ERROR_GEN_FAILURE;
  EXPECT_FALSE(read(device));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_GEN_FAILURE});
  EXPECT_FALSE(write(device, "\x55"));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_GEN_FAILURE});
  EXPECT_TRUE(close(device));
  deviceError = ERROR_SHARING_VIOLATION;
  EXPECT_EQ(open(), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_SHARING_VIOLATION});
  ASSERT_TRUE(hasText("open failed"));
  EXPECT_EQ(timeless(text()), std::string(kHead) +
                                  "# 0 IPD1: open ok\n"
                                  "# 0 IPD1: read-failed 31\n"
                                  "0 IPD1: > 55\n"
                                  "# 0 IPD1: write-failed 31\n"
                                  "# 0 IPD1: close\n"
                                  "# 0 IPD1: open failed 32\n");
}

TEST_F(RecorderDll, RecordsNothingOfOtherFiles) {
  write("other.txt", "text");
  load();
  const HANDLE other = open((folder / "other.txt").c_str());
  ASSERT_NE(other, INVALID_HANDLE_VALUE);
  EXPECT_TRUE(read(other));
  EXPECT_TRUE(write(other, "more"));
  EXPECT_TRUE(close(other));
  EXPECT_EQ(text("other.txt"), "textmore");
  EXPECT_TRUE(close(open()));
  ASSERT_TRUE(hasText(" close\n"));
  EXPECT_EQ(timeless(text()), std::string(kHead) + "# 0 IPD1: open ok\n# 0 IPD1: close\n");
}

TEST_F(RecorderDll, AppendsTheNextConnection) {
  load();
  EXPECT_TRUE(close(open()));
  ASSERT_TRUE(hasText(" close\n"));
  const size_t before = text().size();
  EXPECT_TRUE(close(open()));
  EXPECT_TRUE(eventually([&] {
    return timeless(text().substr(before)) == "# 0 IPD1: open ok\n# 0 IPD1: close\n";
  })) << text();
}

TEST_F(RecorderDll, OverwritesATraceOnly) {
  set("file = old.trace\n");
  write("old.trace", "# ipodctl-trace 1\r\n0.000000 IPD1: < 55\r\n");
  load();
  EXPECT_TRUE(close(open()));
  EXPECT_TRUE(eventually([&] {
    return timeless(text("old.trace")) ==
           std::string(kHead) + "# 0 IPD1: open ok\n# 0 IPD1: close\n";
  })) << text("old.trace");
}

TEST_F(RecorderDll, KeepsAFileThatIsNotATrace) {
  write("ipod.trace", "# ipodctl-trace 10\n");
  load();
  const HANDLE device = open();
  EXPECT_LT(longestCall(device), kSlowWrite);
  EXPECT_TRUE(close(device));
  EXPECT_EQ(text(), "# ipodctl-trace 10\n");
}

TEST_F(RecorderDll, DropsAndCountsLinesWhileTheCardIsSlow) {
  set("buffer = 8192\n");
  load();
  cardIsSlow = true;
  const HANDLE device = open();
  milliseconds longest{0};
  ASSERT_TRUE(eventually([&] {
    longest = std::max(longest, longestCall(device));
    return slowWrites > 0;
  }));
  cardIsSlow = false;
  EXPECT_TRUE(close(device));
  EXPECT_LT(longest, kSlowWrite);
  EXPECT_TRUE(hasText(" lines were lost: the file was too slow\n"));
  std::printf("slow card: longest call %d ms\n", static_cast<int>(longest.count()));
}

TEST_F(RecorderDll, WritesOnWhenAFullCardHasRoomAgain) {
  set("buffer = 8192\n");
  load();
  const HANDLE device = open();
  longestCall(device);
  ASSERT_TRUE(hasText("> 55 01 02\n"));
  cardIsFull = true;
  const milliseconds longest = longestCall(device);
  EXPECT_LT(longest, kSlowWrite);
  const size_t before = text().size();
  ASSERT_TRUE(eventually([&] { return text().size() > before; })) << "a part was written";
  cardIsFull = false;
  EXPECT_TRUE(hasText(" lines were lost: "));
  EXPECT_TRUE(close(device));
  ASSERT_TRUE(hasText(" close\n"));
  // Each line is whole.
  const std::string lines = timeless(text()).substr(std::strlen(kHead));
  const std::regex known(
      "(# 0 IPD1: (open ok|close)|0 IPD1: (> 55 01 02|< 55 02 00 01 FD)"
      "|# [0-9]+ lines were lost: .*)\n");
  EXPECT_EQ(std::regex_replace(lines, known, ""), "");
  std::printf("full card: longest call %d ms\n", static_cast<int>(longest.count()));
}

}  // namespace
