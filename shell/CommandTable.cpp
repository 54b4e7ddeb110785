#include "shell/CommandTable.h"

#include <algorithm>

#include "classical/Distributions.h"
#include "classical/Frequencies.h"
#include "classical/NormalTests.h"
#include "classical/PairedT.h"
#include "classical/PoissonInterval.h"
#include "classical/QuickSummary.h"
#include "classical/ReferenceRange.h"
#include "classical/ShapiroWilkTest.h"
#include "classical/SingleSampleT.h"
#include "classical/UnivariateSummary.h"
#include "classical/UnpairedT.h"
#include "classical/VarianceRatioTest.h"
#include "host/Form.h"
#include "numeric/Text.h"
#include "session/ReportGraphics.h"
#include "shell/Calculator.h"
#include "shell/FileCommands.h"
#include "workbook/data/ApplyFunction.h"
#include "workbook/data/Categorise.h"
#include "workbook/data/ClearMissing.h"
#include "workbook/data/CombineSplit.h"
#include "workbook/data/DateIntervals.h"
#include "workbook/data/DummyVariables.h"
#include "workbook/data/Extract.h"
#include "workbook/data/FillSeries.h"
#include "workbook/data/Pairwise.h"
#include "workbook/data/RandomNumbers.h"
#include "workbook/data/RankScores.h"
#include "workbook/data/RotateBlock.h"
#include "workbook/data/SearchReplace.h"
#include "workbook/data/SortRows.h"
#include "workbook/data/SortedColumns.h"
#include "workbook/data/Standardization.h"
#include "workbook/data/Tabulation.h"
#include "workbook/data/TextToNumbers.h"
#include "workbook/data/Transformations.h"

namespace tellurix {

namespace {

// What an entry works on decides where it stands.
enum Place {
  Sheet,         // on a worksheet: in the main window alone it is a caption without a command
  Screen,        // on figures typed in
  Everywhere,    // on neither
  Document,      // on the worksheet or the report in front
  InReportOnly,  // on a report's text
};

struct Row {
  const char* path;  // captions with access keys
  const char* name;
  int help;
  Place place;
  Command command = nullptr;
};

void AnalysisOptions(Session& session) { session.prompts.AnalysisOptions(); }

void ChartOptions(Session& session) { GraphicsOptions(session); }

constexpr Row Rows[] = {
    {"&File/&New Workbook", "M_New_Workbook", 100, Everywhere, fileMenu::NewWorkbook},
    {"&File/New &Report", "M_New_Report", 101, Everywhere, fileMenu::NewReport},
    {"&File/&Open File", "M_Open", 102, Everywhere, fileMenu::Open},
    {"&File/&Close Workbook", "M_Close_Workbook", 103, Sheet, fileMenu::CloseWorkbook},
    {"&File/&Save Workbook", "M_Save_Workbook", 104, Sheet, fileMenu::SaveWorkbook},
    {"&File/Save &Workbook As", "M_Save_Workbook_As", 105, Sheet, fileMenu::SaveWorkbookAs},
    {"&File/Save Workbook &Template", "M_Save_Template", 106, Sheet, fileMenu::SaveTemplate},
    {"&File/&Close Report", "M_Report_Close", 150, InReportOnly, fileMenu::CloseReport},
    {"&File/&Save Report", "M_Report_Save", 151, InReportOnly, fileMenu::SaveReport},
    {"&File/Save Report &As", "M_Report_Save_As", 152, InReportOnly, fileMenu::SaveReportAs},
    {"&File/&Page Setup", "M_Page_Setup", 107, Document},
    {"&File/Set Print &Area", "M_Print_Area", 108, Sheet},
    {"&File/Pr&int", "M_Print", 109, Document},
    {"&File/Print Pr&eview", "M_Print_Preview", 110, Document},
    {"&File/Printer Set&up", "M_Printer_Setup", 111, Everywhere},
    {"&File/I&mport Data", "M_Import", 112, Sheet, fileMenu::ImportData},
    {"&File/Export &Data", "M_Export", 113, Sheet, fileMenu::ExportData},
    {"&File/Import &Text", "M_Report_Import_Text", 153, InReportOnly, fileMenu::ImportText},
    {"&File/Export P&DF", "M_Report_Export_PDF", 154, InReportOnly},
    {"&File/E&xit", "M_Exit", 114, Everywhere},
    {"&Edit/&Cut", "M_Cut", 200, Document},
    {"&Edit/C&opy", "M_Copy", 201, Document},
    {"&Edit/&Paste", "M_Paste", 202, Document},
    {"&Edit/Paste &Special", "M_Paste_Special", 203, Document},
    {"&Edit/&Fill Down", "M_Fill_Down", 204, Sheet},
    {"&Edit/Fill &Right", "M_Fill_Right", 205, Sheet},
    {"&Edit/&Undo Last", "M_Undo", 206, Document},
    {"&Edit/F&ind", "M_Find", 207, Document},
    {"&Edit/R&eplace", "M_Replace", 208, Document},
    {"&Edit/&Goto Cell", "M_Goto", 209, Sheet},
    {"&Edit/C&lear Selection", "M_Clear", 210, Document},
    {"&Edit/&Delete Special", "M_Delete_Special", 211, Sheet},
    {"&Edit/Dele&te Row", "M_Delete_Row", 212, Sheet},
    {"&Edit/Delete Colu&mn", "M_Delete_Column", 213, Sheet},
    {"&Edit/Delete S&heet", "M_Delete_Sheet", 214, Sheet},
    {"&Edit/Descri&be Column Data", "M_Describe_Column", 215, Sheet},
    {"&Edit/Select &All", "M_Report_Select_All", 250, InReportOnly},
    {"&Edit/E&xport Picture", "M_Report_Export_Picture", 251, InReportOnly},
    {"&Insert/&Cells", "M_Insert_Cells", 300, Sheet},
    {"&Insert/&Row", "M_Insert_Row", 301, Sheet},
    {"&Insert/C&olumn", "M_Insert_Column", 302, Sheet},
    {"&Insert/&Sheet", "M_Insert_Sheet", 303, Sheet},
    {"&Insert/&Date and Time", "M_Report_Insert_Date", 350, InReportOnly},
    {"F&ormat/&Cells", "M_Format_Cells", 400, Sheet},
    {"F&ormat/&Row/&Hide", "M_Row_Hide", 401, Sheet},
    {"F&ormat/&Row/&Unhide", "M_Row_Unhide", 402, Sheet},
    {"F&ormat/&Row/H&eight", "M_Row_Height", 403, Sheet},
    {"F&ormat/&Row/&Default Height", "M_Row_Default_Height", 404, Sheet},
    {"F&ormat/C&olumn/&Hide", "M_Column_Hide", 405, Sheet},
    {"F&ormat/C&olumn/&Unhide", "M_Column_Unhide", 406, Sheet},
    {"F&ormat/C&olumn/&Width", "M_Column_Width", 407, Sheet},
    {"F&ormat/C&olumn/&Default Width", "M_Column_Default_Width", 408, Sheet},
    {"F&ormat/C&olumn/&Auto-Fit Width", "M_Column_AutoFit", 409, Sheet},
    {"F&ormat/&Freeze Panes", "M_Freeze_Panes", 410, Sheet},
    {"F&ormat/&Default Font", "M_Default_Font", 411, Sheet},
    {"F&ormat/Colour &Palette", "M_Colour_Palette", 412, Sheet},
    {"F&ormat/&Lock Sheet", "M_Lock_Sheet", 413, Sheet},
    {"F&ormat/&Sheet Settings", "M_Sheet_Settings", 414, Sheet},
    {"F&ormat/&Workbook Options", "M_Workbook_Options", 415, Sheet},
    {"F&ormat/&Font", "M_Report_Font", 450, InReportOnly},
    {"F&ormat/&Bold", "M_Report_Bold", 451, InReportOnly},
    {"F&ormat/&Italic", "M_Report_Italic", 452, InReportOnly},
    {"F&ormat/&Underline", "M_Report_Underline", 453, InReportOnly},
    {"F&ormat/Su&perscript", "M_Report_Superscript", 454, InReportOnly},
    {"F&ormat/&Subscript", "M_Report_Subscript", 455, InReportOnly},
    {"F&ormat/&Colour", "M_Report_Colour", 456, InReportOnly},
    {"F&ormat/Align &Left", "M_Report_Left", 457, InReportOnly},
    {"F&ormat/Ce&ntre", "M_Report_Centre", 458, InReportOnly},
    {"F&ormat/Align &Right", "M_Report_Right", 459, InReportOnly},
    {"F&ormat/&Justify", "M_Report_Justify", 460, InReportOnly},
    {"F&ormat/Bulle&ts", "M_Report_Bullets", 461, InReportOnly},
    {"F&ormat/Nu&mbering", "M_Report_Numbering", 462, InReportOnly},
    {"F&ormat/R&eport Defaults", "M_Report_Defaults", 463, InReportOnly},
    {"&Data/&Transformations/&Log (Natural)", "M_Transform(0)", 1000, Sheet, TransformToNaturalLog},
    {"&Data/&Transformations/Log (&Base 10)", "M_Transform(1)", 1001, Sheet, TransformToLog10},
    {"&Data/&Transformations/L&ogit", "M_Transform(2)", 1002, Sheet, TransformToLogit},
    {"&Data/&Transformations/&Probit", "M_Transform(3)", 1003, Sheet, TransformToProbit},
    {"&Data/&Transformations/&Angular", "M_Transform(4)", 1004, Sheet, TransformToAngle},
    {"&Data/&Transformations/&Cumulative", "M_Transform(5)", 1005, Sheet, TransformToCumulative},
    {"&Data/&Transformations/La&dder of Powers", "M_Transform(6)", 1006, Sheet, TransformToLadderOfPowers},
    {"&Data/&Sort/&Create Sorted Columns", "M_Sort(0)", 1007, Sheet, CreateSortedColumns},
    {"&Data/&Sort/&Manipulate Worksheet", "M_Sort(1)", 1008, Sheet, SortRows},
    {"&Data/&Random Numbers/&Uniform 0 to 1", "M_Random(0)", 1009, Sheet,
     FillRandomNumbers<RandomLaw::UniformZeroToOne>},
    {"&Data/&Random Numbers/Uniform &a to b", "M_Random(1)", 1010, Sheet, FillRandomNumbers<RandomLaw::UniformAToB>},
    {"&Data/&Random Numbers/&Normal", "M_Random(2)", 1011, Sheet, FillRandomNumbers<RandomLaw::Normal>},
    {"&Data/&Random Numbers/&Lognormal", "M_Random(3)", 1012, Sheet, FillRandomNumbers<RandomLaw::Lognormal>},
    {"&Data/&Random Numbers/B&inomial", "M_Random(4)", 1013, Sheet, FillRandomNumbers<RandomLaw::Binomial>},
    {"&Data/&Random Numbers/&Poisson", "M_Random(5)", 1014, Sheet, FillRandomNumbers<RandomLaw::Poisson>},
    {"&Data/&Random Numbers/&Gamma", "M_Random(6)", 1015, Sheet, FillRandomNumbers<RandomLaw::Gamma>},
    {"&Data/&Random Numbers/&Exponential", "M_Random(7)", 1016, Sheet, FillRandomNumbers<RandomLaw::Exponential>},
    {"&Data/&Random Numbers/&Chi-square", "M_Random(8)", 1017, Sheet, FillRandomNumbers<RandomLaw::ChiSquare>},
    {"&Data/&Random Numbers/&F (Variance Ratio)", "M_Random(9)", 1018, Sheet, FillRandomNumbers<RandomLaw::F>},
    {"&Data/&Random Numbers/&Student's t", "M_Random(10)", 1019, Sheet, FillRandomNumbers<RandomLaw::StudentT>},
    {"&Data/&Random Numbers/L&ogistic", "M_Random(11)", 1020, Sheet, FillRandomNumbers<RandomLaw::Logistic>},
    {"&Data/&Random Numbers/Geo&metric", "M_Random(12)", 1021, Sheet, FillRandomNumbers<RandomLaw::Geometric>},
    {"&Data/&Random Numbers/Nega&tive Binomial", "M_Random(13)", 1022, Sheet,
     FillRandomNumbers<RandomLaw::NegativeBinomial>},
    {"&Data/&Random Numbers/Cauc&hy", "M_Random(14)", 1023, Sheet, FillRandomNumbers<RandomLaw::Cauchy>},
    {"&Data/&Random Numbers/&Weibull", "M_Random(15)", 1024, Sheet, FillRandomNumbers<RandomLaw::Weibull>},
    {"&Data/&Random Numbers/&Beta", "M_Random(16)", 1025, Sheet, FillRandomNumbers<RandomLaw::Beta>},
    {"&Data/&Pairwise/&Differences", "M_Pairwise(0)", 1026, Sheet, PairwiseDifferences},
    {"&Data/&Pairwise/&Means", "M_Pairwise(1)", 1027, Sheet, PairwiseMeans},
    {"&Data/&Pairwise/&Slopes", "M_Pairwise(2)", 1028, Sheet, PairwiseSlopes},
    {"&Data/&Grouping/&Categorise", "M_Grouping(0)", 1029, Sheet, Categorise},
    {"&Data/&Grouping/&Extract", "M_Grouping(1)", 1030, Sheet, Extract},
    {"&Data/&Grouping/C&ombine", "M_Grouping(2)", 1031, Sheet, CombineColumns},
    {"&Data/&Grouping/&Split", "M_Grouping(3)", 1032, Sheet, SplitColumns},
    {"&Data/&Grouping/&Tabulate", "M_Grouping(4)", 1033, Sheet, Tabulate},
    {"&Data/&Grouping/&Detabulate", "M_Grouping(5)", 1034, Sheet, Detabulate},
    {"&Data/&Apply Function", "M_Datax(0)", 1035, Sheet, ApplyFunction},
    {"&Data/&Clear Missing Data", "M_Datax(1)", 1036, Sheet, ClearMissingData},
    {"&Data/&Date && Time Intervals", "M_Datax(2)", 1037, Sheet, DateIntervals},
    {"&Data/Dummy &Variables", "M_Datax(3)", 1038, Sheet, MakeDummyVariables},
    {"&Data/&Fill Series", "M_Datax(4)", 1039, Sheet, FillSeries},
    {"&Data/&Normal Scores", "M_Datax(5)", 1040, Sheet, NormalScores},
    {"&Data/Ran&k", "M_Datax(6)", 1041, Sheet, RankColumns},
    {"&Data/Rotate Data &Block", "M_Datax(7)", 1042, Sheet, RotateDataBlock},
    {"&Data/S&earch && Replace", "M_Datax(8)", 1043, Sheet, SearchAndReplace},
    {"&Data/Standard&ization", "M_Datax(9)", 1044, Sheet, Standardization},
    {"&Data/Te&xt to Numbers", "M_Datax(10)", 1045, Sheet, TextToNumbers},
    {"&Analysis/&Exact Tests on Counts/&Sign", "M_Exact(0)", 2000, Screen},
    {"&Analysis/&Exact Tests on Counts/&Fisher", "M_Exact(1)", 2001, Screen},
    {"&Analysis/&Exact Tests on Counts/&Expanded Fisher", "M_Exact(2)", 2002, Screen},
    {"&Analysis/&Exact Tests on Counts/&r by c Fisher", "M_Exact(3)", 2003, Screen},
    {"&Analysis/&Exact Tests on Counts/&Matched Pairs", "M_Exact(4)", 2004, Screen},
    {"&Analysis/&Exact Tests on Counts/&Odds Ratio CI", "M_Exact(5)", 2005, Screen},
    {"&Analysis/&Exact Tests on Counts/&Poisson Rate CI", "M_Exact(6)", 2006, Screen},
    {"&Analysis/C&hi-Square Tests/&2 by 2", "M_Chi_22", 2050, Screen},
    {"&Analysis/C&hi-Square Tests/2 &by k/&Without Trend", "M_Chi_2k_nt", 2051, Screen},
    {"&Analysis/C&hi-Square Tests/2 &by k/&Trend Scores 1 to k", "M_Chi_2k_tk", 2052, Screen},
    {"&Analysis/C&hi-Square Tests/2 &by k/&Enter Trend Scores", "M_Chi_2k_ts", 2053, Screen},
    {"&Analysis/C&hi-Square Tests/&r by c/&Worksheet Data", "M_Chi_rc_Worksheet", 2054, Sheet},
    {"&Analysis/C&hi-Square Tests/&r by c/&Screen Data", "M_Chi_rc_Screen", 2055, Screen},
    {"&Analysis/C&hi-Square Tests/&McNemar", "M_Chi_mcnemar", 2056, Screen},
    {"&Analysis/C&hi-Square Tests/M&axwell/&Worksheet Data", "M_Chi_Maxwell_Worksheet", 2057, Sheet},
    {"&Analysis/C&hi-Square Tests/M&axwell/&Screen Data", "M_Chi_Maxwell_Screen", 2058, Screen},
    {"&Analysis/C&hi-Square Tests/Mantel-&Haenszel/&Worksheet Data", "M_Chi_Mantel_Worksheet", 2059, Sheet},
    {"&Analysis/C&hi-Square Tests/Mantel-&Haenszel/&Screen Data", "M_Chi_Mantel_Screen", 2060, Screen},
    {"&Analysis/C&hi-Square Tests/&Woolf/&Worksheet Data", "M_Chi_Woolf_Worksheet", 2061, Sheet},
    {"&Analysis/C&hi-Square Tests/&Woolf/&Screen Data", "M_Chi_Woolf_Screen", 2062, Screen},
    {"&Analysis/P&roportions/&Single", "M_Proportions(0)", 2100, Screen},
    {"&Analysis/P&roportions/&Paired", "M_Proportions(1)", 2101, Screen},
    {"&Analysis/P&roportions/&Two Independent", "M_Proportions(2)", 2102, Screen},
    {"&Analysis/Ra&tes/&Poisson Rate CI", "M_Rate(0)", 2150, Screen},
    {"&Analysis/Ra&tes/&Compare Two Crude Rates", "M_Rate(1)", 2151, Screen},
    {"&Analysis/Ra&tes/&Standardize && Compare Two Rates", "M_Rate(2)", 2152, Screen},
    {"&Analysis/Ra&tes/&Direct Standardization/&Worksheet Data", "M_Rate_Direct_Worksheet", 2153, Sheet},
    {"&Analysis/Ra&tes/&Direct Standardization/&Screen Data", "M_Rate_Direct_Screen", 2154, Screen},
    {"&Analysis/Ra&tes/&Indirect Standardization && SMR/&Worksheet Data", "M_Rate_Indirect_Worksheet", 2155, Sheet},
    {"&Analysis/Ra&tes/&Indirect Standardization && SMR/&Screen Data", "M_Rate_Indirect_Screen", 2156, Screen},
    {"&Analysis/Distri&butions/&Normal", "M_Distributions(0)", 2200, Screen, DistributionCommand<0>},
    {"&Analysis/Distri&butions/&Student's t", "M_Distributions(1)", 2201, Screen, DistributionCommand<1>},
    {"&Analysis/Distri&butions/&F (Variance Ratio)", "M_Distributions(2)", 2202, Screen, DistributionCommand<2>},
    {"&Analysis/Distri&butions/&Chi-Square", "M_Distributions(3)", 2203, Screen, DistributionCommand<3>},
    {"&Analysis/Distri&butions/Studentized &Range (Q)", "M_Distributions(4)", 2204, Screen, DistributionCommand<4>},
    {"&Analysis/Distri&butions/&Binomial", "M_Distributions(5)", 2205, Screen, DistributionCommand<5>},
    {"&Analysis/Distri&butions/&Poisson", "M_Distributions(6)", 2206, Screen, DistributionCommand<6>},
    {"&Analysis/Distri&butions/&Kendall's tau", "M_Distributions(7)", 2207, Screen, DistributionCommand<7>},
    {"&Analysis/Distri&butions/Sp&earman's rho", "M_Distributions(8)", 2208, Screen, DistributionCommand<8>},
    {"&Analysis/Distri&butions/Non-Central &t", "M_Distributions(9)", 2209, Screen, DistributionCommand<9>},
    {"&Analysis/Sample Si&ze/&Paired and 1 sample t", "M_Sample(0)", 2250, Screen},
    {"&Analysis/Sample Si&ze/&Unpaired t", "M_Sample(1)", 2251, Screen},
    {"&Analysis/Sample Si&ze/&Independent Case-Control", "M_Sample(2)", 2252, Screen},
    {"&Analysis/Sample Si&ze/Independent &Cohort", "M_Sample(3)", 2253, Screen},
    {"&Analysis/Sample Si&ze/&Matched Case-Control", "M_Sample(4)", 2254, Screen},
    {"&Analysis/Sample Si&ze/P&aired Cohort", "M_Sample(5)", 2255, Screen},
    {"&Analysis/Sample Si&ze/Population &Survey", "M_Sample(6)", 2256, Screen},
    {"&Analysis/Sample Si&ze/Survival &Times", "M_Sample(7)", 2257, Screen},
    {"&Analysis/Sample Si&ze/C&orrelation", "M_Sample(8)", 2258, Screen},
    {"&Analysis/Rando&mization/&Series x to y", "M_Randomization(0)", 2300, Screen},
    {"&Analysis/Rando&mization/&Intervention-Control Pairs", "M_Randomization(1)", 2301, Screen},
    {"&Analysis/Rando&mization/&Two Independent Groups", "M_Randomization(2)", 2302, Screen},
    {"&Analysis/Rando&mization/&Blocks", "M_Randomization(3)", 2303, Screen},
    {"&Analysis/Rando&mization/&Preference Allocation", "M_Randomization(4)", 2304, Sheet},
    {"&Analysis/Clinical Ep&idemiology/&Risk (Prospective)", "M_Misc(0)", 2350, Screen},
    {"&Analysis/Clinical Ep&idemiology/R&isk (Retrospective)", "M_Misc(1)", 2351, Screen},
    {"&Analysis/Clinical Ep&idemiology/&Diagnostic Test (2 by 2)", "M_Misc(2)", 2352, Screen},
    {"&Analysis/Clinical Ep&idemiology/&Likelihood Ratios (2 by k)", "M_Misc(3)", 2353, Screen},
    {"&Analysis/Clinical Ep&idemiology/&Number Needed to Treat", "M_Misc(4)", 2354, Screen},
    {"&Analysis/Clinical Ep&idemiology/&Kappa && Maxwell/&Worksheet Data", "M_Misc_Kappa_Worksheet", 2355, Sheet},
    {"&Analysis/Clinical Ep&idemiology/&Kappa && Maxwell/&Screen Data", "M_Misc_Kappa_Screen", 2356, Screen},
    {"&Analysis/Clinical Ep&idemiology/&Screening Test Errors", "M_Misc(5)", 2357, Screen},
    {"&Analysis/&Descriptive/&Univariate Summary", "M_Univariate(0)", 2400, Sheet, UnivariateSummary},
    {"&Analysis/&Descriptive/&Weighted Univariate Summary", "M_Univariate(1)", 2401, Sheet, WeightedUnivariateSummary},
    {"&Analysis/&Descriptive/&Quick Univariate Summary", "M_Univariate(2)", 2402, Sheet, QuickSummary},
    {"&Analysis/&Parametric/&Paired t", "M_t_Paired", 2450, Sheet, PairedT},
    {"&Analysis/&Parametric/&Single Sample t", "M_t_Single", 2451, Sheet, SingleSampleT},
    {"&Analysis/&Parametric/&Unpaired t", "M_t_Unpaired", 2452, Sheet, UnpairedT},
    {"&Analysis/&Parametric/Summary &Data t/&Single Sample", "M_Summ_SS", 2453, Screen, SingleSampleTFromSummary},
    {"&Analysis/&Parametric/Summary &Data t/&Unpaired", "M_Summ_up", 2454, Screen, UnpairedTFromSummary},
    {"&Analysis/&Parametric/&F (Variance Ratio)", "M_Parametric(0)", 2455, Sheet, VarianceRatioTest},
    {"&Analysis/&Parametric/Single Sample &z", "M_Parametric(1)", 2456, Sheet, SingleSampleZ},
    {"&Analysis/&Parametric/U&npaired z", "M_Parametric(2)", 2457, Sheet, UnpairedZ},
    {"&Analysis/&Parametric/&Reference Range", "M_Parametric(3)", 2458, Sheet, ReferenceRange},
    {"&Analysis/&Parametric/Poisson &Confidence Interval", "M_Parametric(4)", 2459, Sheet, PoissonInterval},
    {"&Analysis/&Parametric/Shapiro-&Wilk", "M_Parametric(5)", 2460, Sheet, ShapiroWilkTest},
    {"&Analysis/&Non-parametric/&Mann-Whitney", "M_nonparametric(0)", 2500, Sheet},
    {"&Analysis/&Non-parametric/&Wilcoxon Signed Ranks", "M_nonparametric(1)", 2501, Sheet},
    {"&Analysis/&Non-parametric/&Kendall Rank Correlation", "M_nonparametric(2)", 2502, Sheet},
    {"&Analysis/&Non-parametric/&Spearman Rank Correlation", "M_nonparametric(3)", 2503, Sheet},
    {"&Analysis/&Non-parametric/&Nonparametric Linear Regression", "M_nonparametric(4)", 2504, Sheet},
    {"&Analysis/&Non-parametric/&Cuzick Trend Test", "M_nonparametric(5)", 2505, Sheet},
    {"&Analysis/&Non-parametric/Smirnov &Two Sample", "M_nonparametric(6)", 2506, Sheet},
    {"&Analysis/&Non-parametric/&Quantile Confidence Interval", "M_nonparametric(7)", 2507, Sheet},
    {"&Analysis/&Non-parametric/K&ruskal-Wallis", "M_nonparametric(8)", 2508, Sheet},
    {"&Analysis/&Non-parametric/&Friedman", "M_nonparametric(9)", 2509, Sheet},
    {"&Analysis/&Non-parametric/Chi-Square &Goodness of Fit", "M_nonparametric(10)", 2510, Sheet},
    {"&Analysis/&Non-parametric/ROC Curve &Analysis", "M_nonparametric(11)", 2511, Sheet},
    {"&Analysis/&Non-parametric/Gini Coefficient &of Inequality", "M_nonparametric(12)", 2512, Sheet},
    {"&Analysis/&Non-parametric/&Diversity of Classes", "M_nonparametric(13)", 2513, Sheet},
    {"&Analysis/Analysis of &Variance/&One Way", "M_ANOVA(0)", 2550, Sheet},
    {"&Analysis/Analysis of &Variance/&Two Way", "M_ANOVA(1)", 2551, Sheet},
    {"&Analysis/Analysis of &Variance/&Replicate Two Way", "M_ANOVA(2)", 2552, Sheet},
    {"&Analysis/Analysis of &Variance/&Fully Nested", "M_ANOVA(3)", 2553, Sheet},
    {"&Analysis/Analysis of &Variance/&Latin Square", "M_ANOVA(4)", 2554, Sheet},
    {"&Analysis/Analysis of &Variance/&Crossover", "M_ANOVA(5)", 2555, Sheet},
    {"&Analysis/Analysis of &Variance/&Kruskal-Wallis", "M_ANOVA(6)", 2556, Sheet},
    {"&Analysis/Analysis of &Variance/Fr&iedman", "M_ANOVA(7)", 2557, Sheet},
    {"&Analysis/Analysis of &Variance/&Agreement", "M_ANOVA(8)", 2558, Sheet},
    {"&Analysis/Re&gression && Correlation/&Simple Linear && Correlation", "M_Simple", 2600, Sheet},
    {"&Analysis/Re&gression && Correlation/&Multiple Linear", "M_Multiple", 2601, Sheet},
    {"&Analysis/Re&gression && Correlation/&Grouped Linear/&Linearity", "M_GrpReplicates", 2602, Sheet},
    {"&Analysis/Re&gression && Correlation/&Grouped Linear/&Covariance", "M_GrpCovar", 2603, Sheet},
    {"&Analysis/Re&gression && Correlation/&Principal Components/&Correlation", "M_Principal(0)", 2604, Sheet},
    {"&Analysis/Re&gression && Correlation/&Principal Components/C&ovariance", "M_Principal(1)", 2605, Sheet},
    {"&Analysis/Re&gression && Correlation/&Linearized Estimates", "M_Linear", 2606, Sheet},
    {"&Analysis/Re&gression && Correlation/P&olynomial", "M_Poly", 2607, Sheet},
    {"&Analysis/Re&gression && Correlation/Log&istic", "M_Logistic", 2608, Sheet},
    {"&Analysis/Re&gression && Correlation/&Conditional Logistic", "M_Clogit", 2609, Sheet},
    {"&Analysis/Re&gression && Correlation/Poisso&n", "M_Poisreg", 2610, Sheet},
    {"&Analysis/Re&gression && Correlation/Probit &Analysis/&Probit Model", "M_Probit(0)", 2611, Sheet},
    {"&Analysis/Re&gression && Correlation/Probit &Analysis/&Logit Model", "M_Probit(1)", 2612, Sheet},
    {"&Analysis/Re&gression && Correlation/&Kendall Rank Correlation", "M_Regression_Rank(0)", 2613, Sheet},
    {"&Analysis/Re&gression && Correlation/Spearman &Rank Correlation", "M_Regression_Rank(1)", 2614, Sheet},
    {"&Analysis/Re&gression && Correlation/Nonparam&etric Linear Regression", "M_Regression_Rank(2)", 2615, Sheet},
    {"&Analysis/Re&gression && Correlation/Co&x Regression", "M_Regression_Cox", 2616, Sheet},
    {"&Analysis/&Agreement/&Continuous (Intra-Class...)", "M_Agreement(0)", 2650, Sheet},
    {"&Analysis/&Agreement/Ca&tegorical (Kappa...)", "M_Agreement(1)", 2651, Sheet},
    {"&Analysis/&Agreement/&Reliability && Reducibility (Alpha...)", "M_Agreement(2)", 2652, Sheet},
    {"&Analysis/&Survival Analysis/&Kaplan-Meier", "M_Survival(0)", 2700, Sheet},
    {"&Analysis/&Survival Analysis/&Follow-Up Life Table", "M_Survival(1)", 2701, Sheet},
    {"&Analysis/&Survival Analysis/&Abridged Life Table", "M_Survival(2)", 2702, Sheet},
    {"&Analysis/&Survival Analysis/&Log-Rank && Wilcoxon", "M_Survival(3)", 2703, Sheet},
    {"&Analysis/&Survival Analysis/&Wei-Lachin", "M_Survival(4)", 2704, Sheet},
    {"&Analysis/&Survival Analysis/&Cox Regression", "M_Survival(5)", 2705, Sheet},
    {"&Analysis/Meta-Anal&ysis/&Odds Ratio", "M_Meta(0)", 2750, Sheet},
    {"&Analysis/Meta-Anal&ysis/Peto Odds R&atio", "M_Meta(1)", 2751, Sheet},
    {"&Analysis/Meta-Anal&ysis/&Relative Risk", "M_Meta(2)", 2752, Sheet},
    {"&Analysis/Meta-Anal&ysis/Risk &Difference", "M_Meta(3)", 2753, Sheet},
    {"&Analysis/Meta-Anal&ysis/&Summary", "M_Meta(4)", 2754, Sheet},
    {"&Analysis/Meta-Anal&ysis/&Effect Size", "M_Meta(5)", 2755, Sheet},
    {"&Analysis/Meta-Anal&ysis/Propor&tion", "M_Meta(6)", 2756, Sheet},
    {"&Analysis/Meta-Anal&ysis/&Incidence Rate/&Ratio", "M_Meta_IR(0)", 2757, Sheet},
    {"&Analysis/Meta-Anal&ysis/&Incidence Rate/&Difference", "M_Meta_IR(1)", 2758, Sheet},
    {"&Analysis/Meta-Anal&ysis/Calculation O&ptions...", "M_Meta_Options", 2759, Everywhere},
    {"&Analysis/Meta-Anal&ysis/P&lot Options...", "M_Meta_Plot_Options", 2760, Everywhere},
    {"&Analysis/&Crosstabs", "M_Crosstabs", 2800, Sheet},
    {"&Analysis/&Frequencies", "M_Frequencies", 2801, Sheet, Frequencies},
    {"&Analysis/&Options", "M_Analysis_Options", 2802, Everywhere, AnalysisOptions},
    {"&Graphics/&Chart Maker", "M_Chart_Designer", 4000, Sheet},
    {"&Graphics/&Box && Whisker", "M_Graphics(0)", 4001, Sheet},
    {"&Graphics/Box && &Whisker (Text)", "M_Graphics(1)", 4002, Sheet},
    {"&Graphics/C&ontrol", "M_Graphics(2)", 4003, Sheet},
    {"&Graphics/&Error Bar", "M_Graphics(3)", 4004, Sheet},
    {"&Graphics/Forest (&Meta-Analysis)", "M_Graphics(4)", 4005, Sheet},
    {"&Graphics/&Histogram", "M_Graphics(5)", 4006, Sheet},
    {"&Graphics/Histogram (&Text)", "M_Graphics(6)", 4007, Sheet},
    {"&Graphics/&Ladder", "M_Graphics(7)", 4008, Sheet},
    {"&Graphics/&Normal", "M_Graphics(8)", 4009, Sheet},
    {"&Graphics/Plot &Function", "M_Graphics(9)", 4010, Sheet},
    {"&Graphics/&Population Pyramid", "M_Graphics(10)", 4011, Sheet},
    {"&Graphics/&ROC", "M_Graphics(11)", 4012, Sheet},
    {"&Graphics/&Scatter", "M_Graphics(12)", 4013, Sheet},
    {"&Graphics/Sc&atter (Text)", "M_Graphics(13)", 4014, Sheet},
    {"&Graphics/Sprea&d", "M_Graphics(14)", 4015, Sheet},
    {"&Graphics/S&urvival", "M_Graphics(15)", 4016, Sheet},
    {"&Graphics/Opt&ions", "M_Graphics(16)", 4017, Sheet, ChartOptions},
    {"&Tools/&Calculator", "M_Apps(0)", 5000, Everywhere, ShowCalculator},
    {"&Tools/Tellurix &Update", "M_Apps(1)", 5001, Everywhere},
    {"&Tools/&Notepad", "M_Apps(2)", 5002, Everywhere},
    {"&Tools/&Wordpad", "M_Apps(3)", 5003, Everywhere},
    {"&Tools/Setup &Tools...", "M_Setup_Tools", 5004, Everywhere},
    {"&Window/&Cascade", "M_Window(0)", 5100, Everywhere},
    {"&Window/&Tile Horizontally", "M_Window(1)", 5101, Everywhere},
    {"&Window/Tile &Vertically", "M_Window(2)", 5102, Everywhere},
    {"&Window/&Arrange Icons", "M_Window(3)", 5103, Everywhere},
    {"&Window/&Maximize", "M_Window(4)", 5104, Everywhere},
    {"&Help/&Contents and Index", "M_Help_Contents", 5200, Everywhere},
    {"&Help/&Method Selection", "M_Method_Selection", 5201, Everywhere},
    {"&Help/&About", "M_About", 5202, Everywhere},
};

// Whether a report's menu has this head: its own File, Edit, Insert and Format, of Analysis the groups on figures typed
// in, neither Data nor Graphics.
bool InReportMenu(std::string_view head, std::string_view group) {
  if (head != "Analysis") return head != "Data" && head != "Graphics";
  constexpr std::string_view groups[] = {
      "Exact Tests on Counts", "Chi-Square Tests", "Proportions",   "Rates",
      "Distributions",         "Sample Size",      "Randomization", "Clinical Epidemiology"};
  return std::ranges::find(groups, group) != std::end(groups);
}

unsigned WindowsOf(const Row& row, std::string_view path) {
  const auto parts = Split(path, '/');
  const std::string_view head = parts[0];
  if (row.place == InReportOnly) return InReport;
  if (row.place == Document) return InWorksheet | InReport;
  if (row.place != Sheet) return InWorksheet | InMain | (InReportMenu(head, parts[1]) ? InReport : 0u);
  // The entries of these on the worksheet itself stand in its own menu only.
  const bool ownMenu = head == "File" || head == "Edit" || head == "Insert" || head == "Format";
  return ownMenu ? InWorksheet : InWorksheet | InMain;
}

MenuEntry EntryOf(const Row& row) {
  MenuEntry entry;
  entry.captions = row.path;
  for (const std::string& caption : Split(row.path, '/')) {
    if (!entry.path.empty()) entry.path += '/';
    entry.path += PlainCaption(caption);
    entry.caption = caption;
  }
  entry.name = row.name;
  entry.helpContext = row.help;
  entry.windows = WindowsOf(row, entry.path);
  entry.active = row.place == Sheet ? InWorksheet : entry.windows;
  entry.command = row.command;
  return entry;
}

}  // namespace

const std::vector<MenuEntry>& CommandTable() {
  static const std::vector<MenuEntry> table = [] {
    std::vector<MenuEntry> entries;
    for (const Row& row : Rows) entries.push_back(EntryOf(row));
    return entries;
  }();
  return table;
}

const MenuEntry* FindCommand(std::string_view nameOrPath) {
  const auto found = std::ranges::find_if(CommandTable(), [&](const MenuEntry& entry) {
    return EqualNoCase(entry.name, nameOrPath) || EqualNoCase(entry.path, nameOrPath);
  });
  return found == CommandTable().end() ? nullptr : &*found;
}

}  // namespace tellurix
