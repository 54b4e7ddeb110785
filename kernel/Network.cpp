// The exact test of an r by c table by the network algorithm.
//
// Columns are taken one after the other. A node is what they leave of the row totals, in falling order; a path to it
// has a length, the sum of ln x! over its cells, and a probability. The tables sought are those whose length is at
// least that of the table observed.
#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <numeric>
#include <stdexcept>
#include <unordered_map>
#include <vector>

#include "kernel/Inner.h"
#include "kernel/NetworkBounds.h"

namespace tellurix::kernel {

namespace {

enum Status : i32 { Done, BadSizes, BadCounts, BadTotal, NoMemory, TooMuchWork, Stopped };

// Tables as probable as the observed one but for rounding count as no more probable.
constexpr f64 Tie = 1e-9;

constexpr f64 DefaultMemory = 1e9;
constexpr f64 DefaultWork = 6e9;
constexpr f64 WorkBetweenPolls = 1e7;
constexpr i32 LargestTotal = 1'000'000;  // of a row or column

// What the bounds of a node cost for each cell of the table to come.
constexpr f64 StepsPerCell = 60;

struct Margins {
  std::vector<i32> rows;     // falling; no more of them than columns
  std::vector<i32> columns;  // rising: the long walks at the end are cut short
};

struct Path {
  f64 length;
  f64 probability;
};

// Paths to one node, those of one length joined: a table with open addressing, found by the length.
class Paths {
 public:
  // Returns by how many places the table grew.
  std::size_t Add(f64 length, f64 probability) {
    if (!(probability > 0)) return 0;
    const std::size_t before = places_.size();
    if (2 * (used_ + 1) > before) Grow();
    Put({std::rint(length * LengthUnits) / LengthUnits, probability});
    return places_.size() - before;
  }

  // The places taken in memory.
  std::size_t Size() const { return places_.size(); }

  // In rising order of length; the table is then empty.
  std::vector<Path> Taken() {
    std::vector<Path> paths = std::move(places_);
    places_.clear();
    used_ = 0;
    std::erase_if(paths, [](const Path& path) { return path.probability == 0; });
    std::sort(paths.begin(), paths.end(), [](const Path& a, const Path& b) { return a.length < b.length; });
    return paths;
  }

 private:
  // Lengths are kept to 1e-11, far within a tie and far beyond the rounding of equal ones.
  static constexpr f64 LengthUnits = 0x1p36;

  void Put(const Path& path) {
    const std::size_t mask = places_.size() - 1;
    auto place =
        static_cast<std::size_t>(static_cast<std::uint64_t>(path.length * LengthUnits) * 0x9E3779B97F4A7C15u >> 20) &
        mask;
    while (places_[place].probability != 0 && places_[place].length != path.length) place = (place + 1) & mask;
    if (places_[place].probability == 0) ++used_;
    places_[place].length = path.length;
    places_[place].probability += path.probability;
  }

  void Grow() {
    const std::vector<Path> old = std::move(places_);
    places_.assign(std::max<std::size_t>(8, 2 * old.size()), Path{0, 0});
    used_ = 0;
    for (const Path& path : old) {
      if (path.probability != 0) Put(path);
    }
  }

  std::vector<Path> places_;  // a power of two; free ones have the probability 0
  std::size_t used_ = 0;
};

// How the rest of the walk from a node by chi-square goes: the length at which chi-square would be 0, and its df.
struct ChiSquareRest {
  f64 lengthAtZero;
  f64 df;
};

struct Node {
  Lengths rest;  // of what the columns to come can add
  bool approximate = false;
  ChiSquareRest chi{};
  Paths paths;
};

struct HashRows {
  std::size_t operator()(const std::vector<i32>& rows) const {
    std::uint64_t hash = 0;
    for (const i32 row : rows) hash = (hash ^ static_cast<std::uint32_t>(row)) * 0x9E3779B97F4A7C15u + (hash >> 29);
    return hash ^ (hash >> 32);
  }
};
using Stage = std::unordered_map<std::vector<i32>, Node, HashRows>;

// All ways to spread a column over the rows of a node, rows with equal totals being exchangeable: each way once, with
// the number of ways it stands for. `visit` gets the counts, their length and the logarithm of the probability of all
// those ways; with a false answer it ends the walk.
template <typename Visit>
class Spreads {
 public:
  Spreads(const std::vector<i32>& rows, i32 column, const LogFactorials& logFactorials, Visit visit)
      : rows_(rows),
        counts_(rows.size()),
        alike_(rows.size()),
        capacityBehind_(rows.size()),
        logFactorials_(logFactorials),
        visit_(visit) {
    i32 total = 0;
    for (std::size_t i = rows.size(); i-- > 0; total += rows[i]) {
      const bool isLastOfGroup = i + 1 == rows.size() || rows[i + 1] != rows[i];
      alike_[i] = isLastOfGroup ? 1 : alike_[i + 1] + 1;
      capacityBehind_[i] = isLastOfGroup ? total : capacityBehind_[i + 1];
    }
    const f64 ways = LogGammaOnePlus(total) - LogGammaOnePlus(column) - LogGammaOnePlus(total - column);
    From(0, column, {0, -ways, 0, 0});
  }

 private:
  struct Way {
    f64 length;
    f64 logWeight;
    i32 group;  // of the rows before, how many have the total of the last one
    i32 run;    // how many of those have its count too
  };

  // Rows i and on share `left`.
  bool From(std::size_t i, i32 left, const Way& way) {
    if (i == rows_.size()) return visit_(counts_, way.length, way.logWeight);
    const bool exchangeable = i > 0 && rows_[i] == rows_[i - 1];
    const i32 most = std::min({rows_[i], left, exchangeable ? counts_[i - 1] : left});
    // The rows alike take no more than this one each.
    const i32 least = std::max(0, (left - capacityBehind_[i] + alike_[i] - 1) / alike_[i]);
    const i32 group = exchangeable ? way.group + 1 : 1;
    for (i32 count = least; count <= most; ++count) {
      counts_[i] = count;
      // The ways to order a group: its size's factorial over those of the runs of equal counts.
      const i32 run = exchangeable && count == counts_[i - 1] ? way.run + 1 : 1;
      const f64 orders = group == run ? 0 : std::log(static_cast<f64>(group) / run);
      const f64 choices = logFactorials_[rows_[i]] - logFactorials_[count] - logFactorials_[rows_[i] - count];
      if (!From(i + 1, left - count,
                {way.length + logFactorials_[count], way.logWeight + orders + choices, group, run}))
        return false;
    }
    return true;
  }

  const std::vector<i32>& rows_;
  std::vector<i32> counts_;
  std::vector<i32> alike_;           // rows from i on with the total of row i
  std::vector<i32> capacityBehind_;  // of the rows behind those
  const LogFactorials& logFactorials_;
  Visit visit_;
};

class Network {
 public:
  Network(Margins margins, f64 observed, const RcnwaLimits& limits)
      : margins_(std::move(margins)),
        observed_(observed - Tie),
        hybrid_(limits.hybrid != 0),
        limits_(limits),
        mostPaths_((limits.memory > 0 ? limits.memory : DefaultMemory) / sizeof(Path)),
        mostWork_(limits.work > 0 ? limits.work : DefaultWork),
        logFactorials_(std::max(margins_.rows.front(), margins_.columns.back())) {}

  Status Walk(f64& p) {
    Stage stage;
    Enter(NodeAt(stage, margins_.rows, 0), {0, 1});
    const std::size_t last = margins_.columns.size() - 2;
    for (std::size_t column = 0; column < last && status_ == Done; ++column) stage = Advanced(stage, column);
    Finish(stage, last);
    p = std::min(sum_, 1.0);
    return status_;
  }

 private:
  // The nodes behind one more column.
  Stage Advanced(Stage& stage, std::size_t column) {
    Stage next;
    ForEachNode(stage, column, [&](const std::vector<i32>& rows, const std::vector<Path>& paths) {
      std::vector<i32> rest(rows.size());
      Spreads(rows, margins_.columns[column], logFactorials_,
              [&](const std::vector<i32>& counts, f64 length, f64 logWeight) {
                for (std::size_t i = 0; i < rows.size(); ++i) rest[i] = rows[i] - counts[i];
                std::sort(rest.rbegin(), rest.rend());
                Node& node = NodeAt(next, rest, column + 1);
                const f64 weight = std::exp(logWeight);
                for (const Path& path : paths) Enter(node, {path.length + length, path.probability * weight});
                return Spend(1 + static_cast<f64>(paths.size()));
              });
    });
    return next;
  }

  // With two columns left a spread of the one decides the other: every path is compared with every completion.
  void Finish(Stage& stage, std::size_t column) {
    ForEachNode(stage, column, [&](const std::vector<i32>& rows, const std::vector<Path>& paths) {
      // reached[k]: the probability of the completions that make up the length for path k, but not for path k - 1.
      std::vector<f64> reached(paths.size() + 1, 0.0);
      const f64 steps = 1 + std::log2(static_cast<f64>(paths.size()));
      Spreads(rows, margins_.columns[column], logFactorials_,
              [&](const std::vector<i32>& counts, f64 length, f64 logWeight) {
                for (std::size_t i = 0; i < rows.size(); ++i) length += logFactorials_[rows[i] - counts[i]];
                const auto first = std::partition_point(
                    paths.begin(), paths.end(), [&](const Path& path) { return path.length + length < observed_; });
                reached[static_cast<std::size_t>(first - paths.begin())] += std::exp(logWeight);
                return Spend(steps);
              });
      f64 share = 0;
      for (std::size_t k = 0; k < paths.size(); ++k) {
        share += reached[k];
        sum_ += paths[k].probability * share;
      }
    });
  }

  // Takes the nodes that paths have come to out of the stage, one after the other.
  template <typename Work>
  void ForEachNode(Stage& stage, std::size_t column, Work work) {
    const auto nodes = static_cast<f64>(stage.size());
    const auto stages = static_cast<f64>(margins_.columns.size() - 1);
    for (auto at = stage.begin(); at != stage.end() && status_ == Done; at = stage.erase(at)) {
      share_ = (static_cast<f64>(column) + 1 - static_cast<f64>(stage.size()) / nodes) / stages;
      held_ -= static_cast<f64>(at->second.paths.Size());
      const auto paths = at->second.paths.Taken();
      if (!paths.empty()) work(at->first, paths);
    }
  }

  Node& NodeAt(Stage& stage, const std::vector<i32>& rows, std::size_t column) {
    const auto [at, isNew] = stage.try_emplace(rows);
    if (isNew) {
      const std::span<const i32> left(margins_.columns.begin() + static_cast<std::ptrdiff_t>(column),
                                      margins_.columns.end());
      Spend(StepsPerCell * static_cast<f64>(rows.size() * left.size()));
      at->second.rest = BoundLengths(rows, left, logFactorials_);
      if (hybrid_) at->second.approximate = Approximates(rows, left, at->second.chi);
      held_ += static_cast<f64>(sizeof(Node) + rows.size() * sizeof(i32) + 64) / sizeof(Path);
    }
    return at->second;
  }

  // A path ends where every completion makes up the length, or none does.
  void Enter(Node& node, const Path& path) {
    if (path.length + node.rest.most < observed_) return;
    if (path.length + node.rest.least >= observed_) {
      sum_ += path.probability;
    } else if (node.approximate) {
      const f64 half = observed_ - path.length - node.chi.lengthAtZero;
      sum_ += path.probability * (half > 0 ? GammaTails(node.chi.df / 2, half).upper : 1);
    } else {
      held_ += static_cast<f64>(node.paths.Add(path.length, path.probability));
    }
  }

  // Whether Cochran's conditions hold for the rest of the table. If so, the probabilities of its tables are nearly a
  // normal density exp(-chi-square/2) times its height, from which their lengths follow.
  static bool Approximates(const std::vector<i32>& rows, std::span<const i32> columns, ChiSquareRest& chi) {
    f64 total = 0;
    f64 rowCount = 0;
    f64 logRows = 0;
    f64 logFactorialsOfMargins = 0;
    for (const i32 row : rows) {
      if (row == 0) continue;
      total += row;
      ++rowCount;
      logRows += std::log(row);
      logFactorialsOfMargins += LogGammaOnePlus(row);
    }
    f64 logColumns = 0;
    for (const i32 column : columns) {
      logColumns += std::log(column);
      logFactorialsOfMargins += LogGammaOnePlus(column);
    }
    if (rowCount < 2) return false;
    f64 wellFilled = 0;
    for (const i32 row : rows) {
      for (const i32 column : columns) {
        if (row == 0) continue;
        const f64 expected = row / total * column;
        if (expected < 1) return false;
        if (expected >= 5) ++wellFilled;
      }
    }
    const auto columnCount = static_cast<f64>(columns.size());
    if (wellFilled < 0.8 * rowCount * columnCount) return false;
    constexpr f64 LogTwoPi = 2 * HalfLogTwoPi;
    chi.df = (rowCount - 1) * (columnCount - 1);
    const f64 logDeterminant = (columnCount - 1) * (logRows - std::log(total)) +
                               (rowCount - 1) * (logColumns - std::log(total)) - chi.df * std::log(total - 1);
    const f64 logHeight = -0.5 * (chi.df * LogTwoPi + logDeterminant);
    chi.lengthAtZero = logFactorialsOfMargins - LogGammaOnePlus(total) - logHeight;
    return true;
  }

  // Counts steps; false when no more are to be made.
  bool Spend(f64 steps) {
    if (held_ > mostPaths_) status_ = NoMemory;
    work_ += steps;
    if (work_ >= nextPoll_ && status_ == Done) {
      nextPoll_ = work_ + WorkBetweenPolls;
      if (work_ > mostWork_) status_ = TooMuchWork;
      if (limits_.poll != nullptr && limits_.poll(limits_.context, share_) == 0) status_ = Stopped;
    }
    return status_ == Done;
  }

  Margins margins_;
  f64 observed_;
  bool hybrid_;
  const RcnwaLimits& limits_;
  f64 mostPaths_;
  f64 mostWork_;
  LogFactorials logFactorials_;
  f64 sum_ = 0;
  f64 held_ = 0;   // places for paths in memory
  f64 share_ = 0;  // of the walk that is done
  f64 work_ = 0;
  f64 nextPoll_ = WorkBetweenPolls;
  Status status_ = Done;
};

// --- the table ---

Status CheckCounts(const f64* table, i32 rows, i32 columns) {
  f64 total = 0;
  const std::size_t cells = static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns);
  for (std::size_t i = 0; i < cells; ++i) {
    if (!(table[i] >= 0) || std::floor(table[i]) != table[i] || std::isinf(table[i])) return BadCounts;
    total += table[i];
  }
  return total < 1 || total > std::numeric_limits<i32>::max() ? BadTotal : Done;
}

// The totals above 0; the smaller margin becomes the rows.
Margins MarginsOf(const f64* table, i32 rows, i32 columns) {
  std::vector<i32> rowTotals(static_cast<std::size_t>(rows), 0);
  std::vector<i32> columnTotals(static_cast<std::size_t>(columns), 0);
  for (std::size_t j = 0; j < columnTotals.size(); ++j) {
    for (std::size_t i = 0; i < rowTotals.size(); ++i) {
      const auto count = static_cast<i32>(table[j * rowTotals.size() + i]);
      rowTotals[i] += count;
      columnTotals[j] += count;
    }
  }
  std::erase(rowTotals, 0);
  std::erase(columnTotals, 0);
  if (rowTotals.size() > columnTotals.size()) rowTotals.swap(columnTotals);
  std::sort(rowTotals.rbegin(), rowTotals.rend());
  std::sort(columnTotals.begin(), columnTotals.end());
  return {rowTotals, columnTotals};
}

f64 LogFactorialSum(const std::vector<i32>& counts) {
  return std::accumulate(counts.begin(), counts.end(), 0.0, [](f64 sum, i32 k) { return sum + LogGammaOnePlus(k); });
}

Status Test(const f64* table, i32 rows, i32 columns, const RcnwaLimits& limits, f64& pTable, f64& p) {
  if (const Status status = CheckCounts(table, rows, columns); status != Done) return status;
  Margins margins = MarginsOf(table, rows, columns);
  const std::size_t cells = static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns);
  f64 observed = 0;
  for (std::size_t i = 0; i < cells; ++i) observed += LogGammaOnePlus(table[i]);
  const i32 total = std::accumulate(margins.rows.begin(), margins.rows.end(), 0);
  const f64 logP = LogFactorialSum(margins.rows) + LogFactorialSum(margins.columns) - LogGammaOnePlus(total) - observed;
  pTable = std::min(1.0, std::exp(logP));
  if (margins.rows.size() < 2) {
    p = 1;
    return Done;
  }
  if (std::max(margins.rows.front(), margins.columns.back()) > LargestTotal) return NoMemory;
  const Status status = Network(std::move(margins), observed, limits).Walk(p);
  if (status != Done) p = 0;
  return status;
}

}  // namespace

}  // namespace tellurix::kernel

using namespace tellurix::kernel;

void RCNWA(const f64* table, const i32& rows, const i32& columns, const RcnwaLimits& limits, f64& pTable, f64& p,
           i32& status) {
  pTable = p = 0;
  status = BadSizes;
  if (rows < 2 || columns < 2 || table == nullptr) return;
  try {
    status = Test(table, rows, columns, limits, pTable, p);
  } catch (const std::bad_alloc&) {
    status = NoMemory;
  } catch (const std::length_error&) {
    status = NoMemory;
  }
}
