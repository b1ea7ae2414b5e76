// SPDX-License-Identifier: MIT
#include "simulator/program_run.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "simulator/socket_file.h"

namespace hollin::simulator {
namespace {

namespace fs = std::filesystem;

constexpr const char* kLibraryPath = "LD_LIBRARY_PATH";
constexpr int kSignalled = 128;

// A folder for the socket that goes with this object.
class PrivateFolder {
 public:
  PrivateFolder() : path((fs::temp_directory_path() / "ts30-XXXXXX").string()) {
    if (mkdtemp(path.data()) == nullptr) path.clear();
  }
  PrivateFolder(const PrivateFolder&) = delete;
  PrivateFolder& operator=(const PrivateFolder&) = delete;
  ~PrivateFolder() {
    std::error_code ignored;
    if (!path.empty()) fs::remove_all(path, ignored);
  }

  [[nodiscard]] const std::string& Path() const { return path; }

 private:
  std::string path;  // empty when there is none
};

// The stand-in lies at one place in an installation and at another one in a build folder.
std::string StandInFolder() {
  std::error_code failed;
  const fs::path own = fs::read_symlink("/proc/self/exe", failed).parent_path();
  for (const char* folder : {TS30_STANDIN_FROM_PROGRAM, "../simulator/standin"}) {
    const fs::path path = (own / folder).lexically_normal();
    if (fs::exists(path / "libhidapi-hidraw.so.0", failed)) return path.string();
  }
  return {};
}

int Fail(const std::string& what) {
  std::fprintf(stderr, "ts30-simulator: %s\n", what.c_str());
  return 1;
}

int WaitFor(pid_t process) {
  int status = 0;
  while (waitpid(process, &status, 0) < 0) {
    if (errno != EINTR) return 1;
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : kSignalled + WTERMSIG(status);
}

// The keyboard in a process of its own, until this object goes.
class ServingProcess {
 public:
  ServingProcess(const std::string& folder, const ServeIn& serve) {
    int news[2] = {-1, -1};
    if (pipe(news) != 0) return;
    process = fork();
    if (process == 0) {
      close(news[0]);
      Serve(folder, serve, news[1]);
    }
    close(news[1]);
    char ready = 0;
    isReady = process > 0 && read(news[0], &ready, 1) == 1;
    close(news[0]);
  }
  ServingProcess(const ServingProcess&) = delete;
  ServingProcess& operator=(const ServingProcess&) = delete;
  ~ServingProcess() {
    if (process <= 0) return;
    kill(process, SIGTERM);
    WaitFor(process);
  }

  [[nodiscard]] bool IsReady() const { return isReady; }

 private:
  // A process group of its own keeps Ctrl-C from pulling the plug.
  [[noreturn]] static void Serve(const std::string& folder, const ServeIn& serve, int news) {
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    const int code = serve(folder, [news] {
      if (write(news, "r", 1) != 1) Fail("nobody waits for the keyboard");
      close(news);
    });
    std::fflush(nullptr);
    std::_Exit(code);
  }

  pid_t process = -1;
  bool isReady = false;
};

[[noreturn]] void Become(const std::vector<std::string>& program, const std::string& folder,
                         const std::string& standIn) {
  const char* const others = std::getenv(kLibraryPath);
  const std::string path = others == nullptr || *others == '\0' ? standIn : standIn + ":" + others;
  setenv(kLibraryPath, path.c_str(), 1);
  setenv(kDirectoryVariable, folder.c_str(), 1);
  std::vector<char*> arguments;
  arguments.reserve(program.size() + 1);
  for (const std::string& argument : program) {
    arguments.push_back(const_cast<char*>(argument.c_str()));
  }
  arguments.push_back(nullptr);
  execvp(arguments[0], arguments.data());
  Fail("cannot start " + program[0] + ": " + std::strerror(errno));
  std::_Exit(kProgramNotFound);
}

pid_t running = 0;

void PassOn(int signal) { kill(running, signal); }

// Signals wait from its making until it knows what is to become of them.
class HeldSignals {
 public:
  HeldSignals() {
    sigset_t signals;
    sigfillset(&signals);
    sigprocmask(SIG_SETMASK, &signals, &before);
  }
  void Release() const { sigprocmask(SIG_SETMASK, &before, nullptr); }

 private:
  sigset_t before{};
};

// Ctrl-C and Ctrl-\ reach the program from the terminal; what ends this process ends the program.
void LeaveSignalsToTheProgram() {
  for (const int number : {SIGINT, SIGQUIT}) std::signal(number, SIG_IGN);
  for (const int number : {SIGTERM, SIGHUP}) std::signal(number, PassOn);
}

}  // namespace

int RunOnKeyboard(const std::vector<std::string>& program, const ServeIn& serve) {
  const std::string standIn = StandInFolder();
  if (standIn.empty()) return Fail("the stand-in for hidapi is not where it should be");
  const PrivateFolder folder;
  if (folder.Path().empty()) return Fail("cannot make a folder for the keyboard");
  const ServingProcess keyboard(folder.Path(), serve);
  if (!keyboard.IsReady()) return 1;
  const HeldSignals held;
  running = fork();
  if (running == 0) {
    held.Release();
    Become(program, folder.Path(), standIn);
  }
  if (running < 0) return Fail("cannot start a process");
  LeaveSignalsToTheProgram();
  held.Release();
  return WaitFor(running);
}

}  // namespace hollin::simulator
