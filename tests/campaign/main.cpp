// SPDX-License-Identifier: MIT
// The fault matrix, whole, over as many processes as are wanted:
//
//   hollin_campaign [JOBS [UPDATE]]   of all updates, or of the one with that number, from 1
//
// Prints one line an update, every violation, and the total. Exits with 1 when there was a
// violation or the matrix is smaller than promised.
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include "tests/campaign/fault_matrix.h"
#include "tests/campaign/resources.h"

namespace hollin::campaign {
namespace {

constexpr uint64_t kFewestRuns = 150000;
constexpr uint64_t kFirstRuns = 100;     // after these everything is there that stays
constexpr size_t kMostGrowth = 0x10000;  // bytes, for what all the other runs leave together

struct Figures {
  uint64_t runs = 0;
  uint64_t successes = 0;
  uint64_t violations = 0;
  uint64_t mostReports = 0;
  int64_t longestPause = 0;  // milliseconds

  void Add(const Figures& other) {
    runs += other.runs;
    successes += other.successes;
    violations += other.violations;
    mostReports = std::max(mostReports, other.mostReports);
    longestPause = std::max(longestPause, other.longestPause);
  }
};

void Count(const RunResult& result, Figures& figures) {
  figures.Add({.runs = result.hasStruck ? 1U : 0U,
               .successes = result.succeeded ? 1U : 0U,
               .violations = result.violations.empty() && result.hasStruck ? 0U : 1U,
               .mostReports = result.reports,
               .longestPause = result.paused.count()});
}

// What the runs leave behind, from the last of the first ones on.
class Growth {
 public:
  // Is told of every run, once it has ended.
  void CountRun() {
    if (++runs != kFirstRuns) return;
    descriptors = OpenDescriptors();
    bytes = AllocatedBytes();
  }
  [[nodiscard]] bool IsFound() const {
    return runs > kFirstRuns &&
           (OpenDescriptors() != descriptors || AllocatedBytes() > bytes + kMostGrowth);
  }

 private:
  uint64_t runs = 0;
  size_t descriptors = 0;
  size_t bytes = 0;
};

// Every `jobs`-th fault from the `job`-th on.
Figures RunShare(CampaignUpdate& update, size_t job, size_t jobs) {
  Figures figures;
  Growth growth;
  const std::vector<RunFault> faults = update.Faults();
  for (size_t i = job; i < faults.size(); i += jobs) {
    const RunResult result = update.Run(faults[i]);
    Count(result, figures);
    if (!result.hasStruck) std::printf("  %s: did not strike\n", TextOf(faults[i]).c_str());
    for (const std::string& violation : result.violations) {
      std::printf("  %s: %s\n", TextOf(faults[i]).c_str(), violation.c_str());
    }
    growth.CountRun();
  }
  if (growth.IsFound()) {
    std::printf("  descriptors or memory were left behind\n");
    figures.violations++;
  }
  return figures;
}

// The share of a process of its own; its figures come through a pipe. A process that dies leaves
// none, which is a violation.
class Share {
 public:
  Share(CampaignUpdate& update, size_t job, size_t jobs) {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) std::abort();
    child = fork();
    if (child == 0) {
      const Figures figures = RunShare(update, job, jobs);
      std::fflush(stdout);
      const bool isTold = write(ends[1], &figures, sizeof figures) == sizeof figures;
      _exit(isTold ? 0 : 1);
    }
    close(ends[1]);
    end = ends[0];
  }

  Figures Await() {
    Figures figures;
    const bool isTold = read(end, &figures, sizeof figures) == sizeof figures;
    close(end);
    int status = 0;
    waitpid(child, &status, 0);
    if (isTold && WIFEXITED(status) && WEXITSTATUS(status) == 0) return figures;
    std::printf("  a process of the campaign died\n");
    return {.violations = 1};
  }

 private:
  pid_t child = 0;
  int end = -1;
};

Figures RunAll(CampaignUpdate& update, size_t jobs) {
  std::fflush(stdout);
  std::vector<Share> shares;
  for (size_t job = 0; job < jobs; job++) shares.emplace_back(update, job, jobs);
  Figures figures;
  for (Share& share : shares) figures.Add(share.Await());
  return figures;
}

void Print(const char* name, const Figures& figures, double seconds) {
  std::printf("%-40s %8llu %9llu %9llu %10llu %8llu %9.2f s %7.1f s\n", name,
              static_cast<unsigned long long>(figures.runs),
              static_cast<unsigned long long>(figures.successes),
              static_cast<unsigned long long>(figures.runs - figures.successes),
              static_cast<unsigned long long>(figures.violations),
              static_cast<unsigned long long>(figures.mostReports),
              static_cast<double>(figures.longestPause) / 1000, seconds);
}

int Main(size_t jobs, size_t only) {
  using Clock = std::chrono::steady_clock;
  std::printf("%-40s %8s %9s %9s %10s %8s %11s %9s\n", "update", "runs", "succeeded", "failed",
              "violations", "reports", "pauses", "took");
  Figures total;
  const Clock::time_point begin = Clock::now();
  size_t number = 0;
  for (const ReferenceUpdate& reference : ReferenceUpdates()) {
    if (++number != only && only != 0) continue;
    const Clock::time_point start = Clock::now();
    CampaignUpdate update(reference);
    Figures figures{.violations = 1};
    if (update.IsReady()) figures = RunAll(update, jobs);
    Print(reference.name.c_str(), figures,
          std::chrono::duration<double>(Clock::now() - start).count());
    total.Add(figures);
  }
  Print("all", total, std::chrono::duration<double>(Clock::now() - begin).count());
  return total.violations == 0 && (only != 0 || total.runs >= kFewestRuns) ? 0 : 1;
}

}  // namespace
}  // namespace hollin::campaign

int main(int argc, char** argv) {
  const size_t jobs = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 1;
  const size_t only = argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 0;
  return hollin::campaign::Main(std::max<size_t>(jobs, 1), only);
}
