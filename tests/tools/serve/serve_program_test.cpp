// The program `ipodctl serve`: its start and its end.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <thread>
#include <vector>

#include "support/eventually.h"
#include "support/temporary_folder.h"

namespace serving::program {
namespace {

using session::eventually;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

std::string contentOf(const std::filesystem::path& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// A running `ipodctl serve` without an iPod.
class Program {
 public:
  Program(const simulator::TemporaryFolder& folder, const std::string& name,
          const std::vector<std::string>& options)
      : output(folder / (name + ".out")), errors(folder / (name + ".err")), process(fork()) {
    if (process == 0) run((folder / "run").string(), (folder / "none").string(), options);
  }
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;
  ~Program() {
    if (process > 0) kill(process, SIGKILL), waitpid(process, nullptr, 0);
  }

  bool isReady() const {
    return eventually([this] { return contentOf(output).find('\n') != std::string::npos; });
  }

  std::string printed() const { return contentOf(output); }
  std::string complaints() const { return contentOf(errors); }

  void interrupt(int signal) const { kill(process, signal); }

  /// Returns the exit status; -1 when the program does not end.
  int status() {
    int result = 0;
    const bool hasEnded =
        eventually([this, &result] { return waitpid(process, &result, WNOHANG) == process; });
    if (!hasEnded) return -1;
    process = 0;
    return WIFEXITED(result) ? WEXITSTATUS(result) : -1;
  }

 private:
  [[noreturn]] void run(const std::string& runtime, const std::string& device,
                        const std::vector<std::string>& options) const {
    std::filesystem::create_directory(runtime);
    setenv("XDG_RUNTIME_DIR", runtime.c_str(), 1);
    if (std::freopen(output.c_str(), "w", stdout) == nullptr) _exit(99);
    if (std::freopen(errors.c_str(), "w", stderr) == nullptr) _exit(99);
    std::vector<std::string> all = {"ipodctl", "serve", "--device", device};
    all.insert(all.end(), options.begin(), options.end());
    std::vector<char*> arguments;
    for (std::string& one : all)
      arguments.push_back(one.data());
    arguments.push_back(nullptr);
    execv(IPODCTL_PROGRAM, arguments.data());
    _exit(99);
  }

  const std::filesystem::path output;
  const std::filesystem::path errors;
  pid_t process;
};

class ServeProgram : public testing::Test {
 protected:
  const simulator::TemporaryFolder folder;
  const std::filesystem::path runtimeFile = folder / "run/ipodctl/serve.json";
};

TEST_F(ServeProgram, PrintsWhereItIsReadyAndEndsWithASignal) {
  for (const int signal : {SIGINT, SIGTERM}) {
    Program program(folder, std::to_string(signal), {"--port", "0"});
    ASSERT_TRUE(program.isReady()) << program.complaints();
    EXPECT_THAT(program.printed(),
                MatchesRegex("head unit ready on http://127\\.0\\.0\\.1:[0-9]+/\\?token="
                             "[0-9a-f]+\n"));
    EXPECT_THAT(contentOf(runtimeFile), HasSubstr("\"url\":\"http://127.0.0.1:"));
    EXPECT_EQ(std::filesystem::status(runtimeFile).permissions(),
              static_cast<std::filesystem::perms>(0600));
    const auto begin = std::chrono::steady_clock::now();
    program.interrupt(signal);
    EXPECT_EQ(program.status(), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
    EXPECT_THAT(program.complaints(), Not(HasSubstr("ipodctl serve:")));
    EXPECT_FALSE(std::filesystem::exists(runtimeFile));
  }
}

TEST_F(ServeProgram, EndsWithOneLineWhenThePortIsTaken) {
  Program first(folder, "one", {"--port", "0"});
  ASSERT_TRUE(first.isReady()) << first.complaints();
  const std::string url = first.printed();
  const size_t colon = url.find(':', url.find("127"));
  Program second(folder, "two",
                 {"--port", url.substr(colon + 1, url.find('/', colon) - colon - 1)});
  EXPECT_EQ(second.status(), 1);
  EXPECT_THAT(second.complaints(),
              MatchesRegex("ipodctl serve: cannot listen on 127.0.0.1 port [0-9]+: Address already "
                           "in use; end the program that uses it, or choose another --port\n"));
  EXPECT_THAT(contentOf(runtimeFile), HasSubstr("\"url\""));
}

TEST_F(ServeProgram, ListensBeyondThisComputerOnlyWithATokenFile) {
  Program without(folder, "without", {"--listen", "192.0.2.1"});
  EXPECT_EQ(without.status(), 2);
  EXPECT_THAT(without.complaints(), HasSubstr("--token-file"));
  const std::filesystem::path token = folder / "token";
  std::ofstream(token) << "0123456789abcdef0123456789abcdef\n";
  std::filesystem::permissions(token, static_cast<std::filesystem::perms>(0644));
  Program readable(folder, "readable", {"--listen", "192.0.2.1", "--token-file", token.string()});
  EXPECT_EQ(readable.status(), 1);
  EXPECT_THAT(readable.complaints(), HasSubstr("chmod 600"));
  std::filesystem::permissions(token, static_cast<std::filesystem::perms>(0600));
  // An address for examples, which no computer has.
  Program with(folder, "with", {"--listen", "192.0.2.1", "--token-file", token.string()});
  EXPECT_EQ(with.status(), 1);
  EXPECT_THAT(with.complaints(), HasSubstr("cannot listen on 192.0.2.1"));
}

TEST_F(ServeProgram, RefusesAWrongCommandLine) {
  const std::vector<std::vector<std::string>> kOptions = {
      {"--listen", "192.168.1.2"}, {"--listen", "0.0.0.0"}, {"--listen", "localhost"},
      {"--port", "70000"},         {"--logo", "/no/file"},  {"--nonsense"}};
  for (const auto& options : kOptions) {
    Program program(folder, options.front(), options);
    EXPECT_EQ(program.status(), 2) << options.front();
    EXPECT_THAT(program.complaints(), testing::StartsWith("ipodctl"));
  }
}

}  // namespace
}  // namespace serving::program
