#include "shell/CommandTable.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <sstream>

#include "host/Form.h"
#include "numeric/Text.h"

namespace tellurix {
namespace {

// Heads and entries in the order of the menu. The tools are those of new settings; the file history stands apart.
constexpr const char* Menu = R"(
File: New Workbook|New Report|Open File|Close Workbook|Save Workbook|Save Workbook As|Save Workbook Template|Page Setup|Set Print Area|Print|Print Preview|Printer Setup|Import Data|Export Data|Exit
Edit: Cut|Copy|Paste|Paste Special|Fill Down|Fill Right|Undo Last|Find|Replace|Goto Cell|Clear Selection|Delete Special|Delete Row|Delete Column|Delete Sheet|Describe Column Data
Insert: Cells|Row|Column|Sheet
Format: Cells
Format/Row: Hide|Unhide|Height|Default Height
Format/Column: Hide|Unhide|Width|Default Width|Auto-Fit Width
Format: Freeze Panes|Default Font|Colour Palette|Lock Sheet|Sheet Settings|Workbook Options
Data/Transformations: Log (Natural)|Log (Base 10)|Logit|Probit|Angular|Cumulative|Ladder of Powers
Data/Sort: Create Sorted Columns|Manipulate Worksheet
Data/Random Numbers: Uniform 0 to 1|Uniform a to b|Normal|Lognormal|Binomial|Poisson|Gamma|Exponential|Chi-square|F (Variance Ratio)|Student's t|Logistic|Geometric|Negative Binomial|Cauchy|Weibull|Beta
Data/Pairwise: Differences|Means|Slopes
Data/Grouping: Categorise|Extract|Combine|Split|Tabulate|Detabulate
Data: Apply Function|Clear Missing Data|Date & Time Intervals|Dummy Variables|Fill Series|Normal Scores|Rank|Rotate Data Block|Search & Replace|Standardization|Text to Numbers
Analysis/Exact Tests on Counts: Sign|Fisher|Expanded Fisher|r by c Fisher|Matched Pairs|Odds Ratio CI|Poisson Rate CI
Analysis/Chi-Square Tests: 2 by 2
Analysis/Chi-Square Tests/2 by k: Without Trend|Trend Scores 1 to k|Enter Trend Scores
Analysis/Chi-Square Tests/r by c: Worksheet Data|Screen Data
Analysis/Chi-Square Tests: McNemar
Analysis/Chi-Square Tests/Maxwell: Worksheet Data|Screen Data
Analysis/Chi-Square Tests/Mantel-Haenszel: Worksheet Data|Screen Data
Analysis/Chi-Square Tests/Woolf: Worksheet Data|Screen Data
Analysis/Proportions: Single|Paired|Two Independent
Analysis/Rates: Poisson Rate CI|Compare Two Crude Rates|Standardize & Compare Two Rates
Analysis/Rates/Direct Standardization: Worksheet Data|Screen Data
Analysis/Rates/Indirect Standardization & SMR: Worksheet Data|Screen Data
Analysis/Distributions: Normal|Student's t|F (Variance Ratio)|Chi-Square|Studentized Range (Q)|Binomial|Poisson|Kendall's tau|Spearman's rho|Non-Central t
Analysis/Sample Size: Paired and 1 sample t|Unpaired t|Independent Case-Control|Independent Cohort|Matched Case-Control|Paired Cohort|Population Survey|Survival Times|Correlation
Analysis/Randomization: Series x to y|Intervention-Control Pairs|Two Independent Groups|Blocks|Preference Allocation
Analysis/Clinical Epidemiology: Risk (Prospective)|Risk (Retrospective)|Diagnostic Test (2 by 2)|Likelihood Ratios (2 by k)|Number Needed to Treat
Analysis/Clinical Epidemiology/Kappa & Maxwell: Worksheet Data|Screen Data
Analysis/Clinical Epidemiology: Screening Test Errors
Analysis/Descriptive: Univariate Summary|Weighted Univariate Summary|Quick Univariate Summary
Analysis/Parametric: Paired t|Single Sample t|Unpaired t
Analysis/Parametric/Summary Data t: Single Sample|Unpaired
Analysis/Parametric: F (Variance Ratio)|Single Sample z|Unpaired z|Reference Range|Poisson Confidence Interval|Shapiro-Wilk
Analysis/Non-parametric: Mann-Whitney|Wilcoxon Signed Ranks|Kendall Rank Correlation|Spearman Rank Correlation|Nonparametric Linear Regression|Cuzick Trend Test|Smirnov Two Sample|Quantile Confidence Interval|Kruskal-Wallis|Friedman|Chi-Square Goodness of Fit|ROC Curve Analysis|Gini Coefficient of Inequality|Diversity of Classes
Analysis/Analysis of Variance: One Way|Two Way|Replicate Two Way|Fully Nested|Latin Square|Crossover|Kruskal-Wallis|Friedman|Agreement
Analysis/Regression & Correlation: Simple Linear & Correlation|Multiple Linear
Analysis/Regression & Correlation/Grouped Linear: Linearity|Covariance
Analysis/Regression & Correlation/Principal Components: Correlation|Covariance
Analysis/Regression & Correlation: Linearized Estimates|Polynomial|Logistic|Conditional Logistic|Poisson
Analysis/Regression & Correlation/Probit Analysis: Probit Model|Logit Model
Analysis/Regression & Correlation: Kendall Rank Correlation|Spearman Rank Correlation|Nonparametric Linear Regression|Cox Regression
Analysis/Agreement: Continuous (Intra-Class...)|Categorical (Kappa...)|Reliability & Reducibility (Alpha...)
Analysis/Survival Analysis: Kaplan-Meier|Follow-Up Life Table|Abridged Life Table|Log-Rank & Wilcoxon|Wei-Lachin|Cox Regression
Analysis/Meta-Analysis: Odds Ratio|Peto Odds Ratio|Relative Risk|Risk Difference|Summary|Effect Size|Proportion
Analysis/Meta-Analysis/Incidence Rate: Ratio|Difference
Analysis/Meta-Analysis: Calculation Options...|Plot Options...
Analysis: Crosstabs|Frequencies|Options
Graphics: Chart Maker|Box & Whisker|Box & Whisker (Text)|Control|Error Bar|Forest (Meta-Analysis)|Histogram|Histogram (Text)|Ladder|Normal|Plot Function|Population Pyramid|ROC|Scatter|Scatter (Text)|Spread|Survival|Options
Tools: Calculator|Tellurix Update|Notepad|Wordpad|Setup Tools...
Window: Cascade|Tile Horizontally|Tile Vertically|Arrange Icons|Maximize
Help: Contents and Index|Method Selection|About
)";

// The paths of the lines above.
std::vector<std::string> MenuPaths() {
  std::vector<std::string> paths;
  std::istringstream lines(Menu);
  for (std::string line; std::getline(lines, line);) {
    const auto colon = line.find(": ");
    if (colon == std::string::npos) continue;
    for (const std::string& entry : Split(line.substr(colon + 2), '|'))
      paths.push_back(line.substr(0, colon) + "/" + entry);
  }
  return paths;
}

bool Starts(const MenuEntry& entry, std::initializer_list<const char*> heads) {
  return std::any_of(heads.begin(), heads.end(),
                     [&](const char* head) { return entry.path.starts_with(std::string(head) + "/"); });
}

TEST(CommandTable, HoldsTheWholeMenuInItsOrder) {
  const auto expected = MenuPaths();
  std::vector<std::string> paths;
  for (const MenuEntry& entry : CommandTable()) {
    if (entry.windows & InWorksheet) paths.push_back(entry.path);
  }
  for (std::size_t i = 0; i < std::min(paths.size(), expected.size()); ++i) ASSERT_EQ(paths[i], expected[i]) << i;
  EXPECT_EQ(paths.size(), expected.size());
}

TEST(CommandTable, NamesAndHelpNumbersAreUnique) {
  std::set<std::string> names, paths;
  std::set<int> numbers;
  for (const MenuEntry& entry : CommandTable()) {
    EXPECT_TRUE(entry.name.starts_with("M_")) << entry.name;
    EXPECT_TRUE(names.insert(FoldCase(entry.name)).second) << entry.name;
    EXPECT_TRUE(paths.insert(FoldCase(entry.path)).second) << entry.path;
    EXPECT_TRUE(numbers.insert(entry.helpContext).second) << entry.helpContext;
    EXPECT_GT(entry.helpContext, 0);
    EXPECT_TRUE(entry.path.ends_with("/" + PlainCaption(entry.caption))) << entry.caption;
  }
  const char* datax[] = {"Apply Function",
                         "Clear Missing Data",
                         "Date & Time Intervals",
                         "Dummy Variables",
                         "Fill Series",
                         "Normal Scores",
                         "Rank",
                         "Rotate Data Block",
                         "Search & Replace",
                         "Standardization",
                         "Text to Numbers"};
  for (int i = 0; i < 11; ++i) {
    const MenuEntry* entry = FindCommand("m_datax(" + std::to_string(i) + ")");
    ASSERT_NE(entry, nullptr) << i;
    EXPECT_EQ(entry->path, std::string("Data/") + datax[i]);
  }
  EXPECT_EQ(FindCommand("analysis/parametric/single sample T"), FindCommand("M_t_Single"));
  EXPECT_NE(FindCommand("M_t_Single")->command, nullptr);
  EXPECT_EQ(FindCommand("M_None"), nullptr);
}

// In the menu of one window.
void ExpectDistinctAccessKeys(MenuWindow window) {
  std::map<std::string, std::map<char, std::string>> keys;  // by the path of the menu: who has the key
  for (const MenuEntry& entry : CommandTable()) {
    if (!(entry.windows & window)) continue;
    std::string menu;
    for (const std::string& caption : Split(entry.captions, '/')) {  // heads and entry
      const std::string bare = ReplaceAll(caption, "&&", "");
      if (const auto mark = bare.find('&'); mark != std::string::npos) {
        ASSERT_LT(mark + 1, bare.size()) << caption;
        EXPECT_EQ(bare.find('&', mark + 1), std::string::npos) << caption;
        const auto owner = keys[menu].try_emplace(FoldCase(bare.substr(mark + 1, 1))[0], caption).first;
        EXPECT_EQ(owner->second, caption) << "in " << menu << " of window " << window;
      }
      menu += (menu.empty() ? "" : "/") + PlainCaption(caption);
    }
    EXPECT_EQ(menu, entry.path);
  }
  EXPECT_GE(keys[""].size(), 6u);
}

TEST(CommandTable, AccessKeysAreUniqueAmongSiblings) {
  for (const MenuWindow window : {InWorksheet, InReport, InMain}) ExpectDistinctAccessKeys(window);
}

TEST(CommandTable, ReportAndMainWindowHaveTheirReducedTrees) {
  std::set<std::string> reportGroups;
  for (const MenuEntry& entry : CommandTable()) {
    EXPECT_EQ(entry.active & entry.windows, entry.active) << entry.path;
    if (entry.windows == InReport) {
      EXPECT_TRUE(Starts(entry, {"File", "Edit", "Insert", "Format"})) << entry.path;  // a report's own
      continue;
    }
    EXPECT_TRUE(entry.active & InWorksheet) << entry.path;
    EXPECT_EQ(entry.active & ~entry.windows, 0u) << entry.path;
    if (Starts(entry, {"Data", "Graphics"})) {
      EXPECT_EQ(entry.windows, InWorksheet | InMain) << entry.path;
      EXPECT_EQ(entry.active, unsigned{InWorksheet}) << entry.path;  // a caption in the main window
    }
    if (Starts(entry, {"Tools", "Window", "Help"}) || entry.path.ends_with("/Screen Data")) {
      EXPECT_EQ(entry.active, InWorksheet | InReport | InMain) << entry.path;
    }
    if (entry.windows & InReport && Starts(entry, {"Analysis"})) reportGroups.insert(Split(entry.path, '/')[1]);
    if (entry.path.ends_with("/Worksheet Data")) {
      EXPECT_EQ(entry.windows, InWorksheet | InMain) << entry.path;
      EXPECT_EQ(entry.active, unsigned{InWorksheet}) << entry.path;
    }
  }
  EXPECT_EQ(reportGroups,
            (std::set<std::string>{"Chi-Square Tests", "Clinical Epidemiology", "Distributions",
                                   "Exact Tests on Counts", "Proportions", "Randomization", "Rates", "Sample Size"}));
  EXPECT_EQ(FindCommand("M_t_Single")->active, unsigned{InWorksheet});
  EXPECT_TRUE(FindCommand("M_Summ_up")->active & InMain);
}

}  // namespace
}  // namespace tellurix
