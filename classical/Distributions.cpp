#include "classical/Distributions.h"

#include <algorithm>
#include <optional>

#include "classical/DistributionCalculator.h"
#include "host/Form.h"
#include "numeric/Regional.h"
#include "numeric/Rounding.h"
#include "session/Skeleton.h"

namespace tellurix {

namespace {

constexpr int FirstHelpTopic = 2200;
constexpr double LargeCount = 100000;  // of events, above which the inverse asks before it runs
constexpr double LeastLevel = 0.01, GreatestLevel = 99.99;
constexpr const char* ProbabilityBoxes[] = {"edlp", "edup", "ed2p"};  // in the order of ProbabilityBox

// The dialog's logic; its form owns it through the callbacks.
class DistributionsDialog {
 public:
  DistributionsDialog(Session& session, Form& form) : session_(session), form_(form) { AddControls(); }

  void Choose(int number);
  void Changed(const Control& control);
  void Focused(const Control& control);
  void Activated(const Control& control);
  void Pressed(const Control& control);
  bool Closing();

 private:
  void AddControls();
  void Label(const char* id, const char* caption);
  void SetText(std::string_view id, std::string text);
  void ClearFound();
  std::optional<ProbabilityBox> BoxOf(std::string_view id) const;

  void Calculate();
  void FindLimit(bool upperLimit);
  bool MayInvert(const DistributionFigures& figures);
  double Read(std::string_view id) const;
  DistributionFigures ReadBoxes() const;
  void ShowFigures(const DistributionFigures& figures, const Value& line);
  std::string BoxText(double x) const;

  Session& session_;
  Form& form_;
  Distribution distribution_ = Distribution::Normal;
  std::optional<ProbabilityBox> given_;  // the box that holds what is known; nothing: that of the statistic
  Value line_;                           // of the last calculation
  std::string saved_;                    // rich text
  std::vector<double> savedNumbers_;
};

void DistributionsDialog::AddControls() {
  std::vector<std::string> names;
  for (int i = 0; i < DistributionCount; ++i) names.emplace_back(LabelsOf(static_cast<Distribution>(i)).name);
  form_.AddCombo("Dist", "Distribution", std::move(names), 0);
  for (const char* id : {"edpdf", "eddf", "eddf2", "edlp", "edup", "ed2p"}) form_.AddText(id, id, "");
  form_.AddCombo("combo_cl", "Confidence (%)", {"80", "85", "90", "95", "99"}, 3).editable = true;
  form_.AddLabel("Line", "");
  form_.AddButton("Calc", "C&alculate", ButtonRole::Default);
  form_.AddButton("btn_lcl", "&Lower limit", ButtonRole::None);
  form_.AddButton("btn_ucl", "&Upper limit", ButtonRole::None);
  form_.AddButton("Save", "&Save", ButtonRole::None).enabled = false;
  form_.AddButton("Close", "&Close", ButtonRole::Cancel);
}

void DistributionsDialog::Label(const char* id, const char* caption) {
  form_.Update(id, [&](Control& control) {
    control.value.clear();
    control.visible = caption != nullptr;
    if (caption) control.caption = caption;
  });
}

void DistributionsDialog::SetText(std::string_view id, std::string text) {
  form_.Update(id, [&](Control& control) { control.value = std::move(text); });
}

void DistributionsDialog::Choose(int number) {
  distribution_ = static_cast<Distribution>(number);
  given_.reset();
  const DistributionLabels& labels = LabelsOf(distribution_);
  form_.Update("Dist", [&](Control& list) {
    list.index = number;
    list.value = labels.name;
  });
  Label("edpdf", labels.statistic);
  Label("eddf", labels.first);
  Label("eddf2", labels.second);
  Label("edlp", labels.lower);
  Label("edup", labels.upper);
  Label("ed2p", labels.third);
  if (distribution_ == Distribution::Binomial) SetText("edpdf", Localized(".5", session_.options.regional));
  form_.Update("Line", [](Control& label) { label.caption.clear(); });
  form_.Update("Save", [](Control& button) { button.enabled = false; });
  const bool hasLimits = distribution_ == Distribution::Binomial || distribution_ == Distribution::Poisson;
  for (const char* id : {"combo_cl", "btn_lcl", "btn_ucl"}) {
    form_.Update(id, [&](Control& control) { control.visible = hasLimits; });
  }
  form_.helpContext = FirstHelpTopic + number;
  form_.title = std::string(labels.name) + " distribution";
  if (form_.view) form_.view("");
}

// ---------------------------------------------------------------------------------------------------------------------
// What is known and what is sought
// ---------------------------------------------------------------------------------------------------------------------

std::optional<ProbabilityBox> DistributionsDialog::BoxOf(std::string_view id) const {
  const auto box = std::ranges::find(ProbabilityBoxes, id);
  if (box == std::end(ProbabilityBoxes) || !HasInverse(distribution_)) return std::nullopt;
  return static_cast<ProbabilityBox>(box - ProbabilityBoxes);
}

// What was found no longer belongs to what stands beside it.
void DistributionsDialog::ClearFound() {
  const std::string known = given_ ? ProbabilityBoxes[static_cast<int>(*given_)] : "edpdf";
  for (const char* id : {"edpdf", "edlp", "edup", "ed2p"}) {
    if (id != known) SetText(id, "");
  }
}

void DistributionsDialog::Changed(const Control& control) {
  if (control.id == "Dist") return Choose(control.index);
  if (control.id == "combo_cl") return;
  if (control.id == "edpdf") given_.reset();
  if (const auto box = BoxOf(control.id)) given_ = box;
  ClearFound();
}

// An empty box, gone through on the way to another, is not what is known.
void DistributionsDialog::Focused(const Control& control) {
  if (control.value.empty()) return;
  if (control.id == "edpdf") given_.reset();
  if (const auto box = BoxOf(control.id)) given_ = box;
}

void DistributionsDialog::Activated(const Control& control) {
  Focused(control);
  if (control.kind == ControlKind::Text) Calculate();
}

void DistributionsDialog::Pressed(const Control& control) {
  if (control.id == "Calc") Calculate();
  if (control.id == "btn_lcl") FindLimit(false);
  if (control.id == "btn_ucl") FindLimit(true);
  if (control.id == "Save") {
    saved_ += (saved_.empty() ? "" : "\\par ") + EscapeRtf(line_.text);
    savedNumbers_.insert(savedNumbers_.end(), line_.numbers.begin(), line_.numbers.end());
  }
}

// ---------------------------------------------------------------------------------------------------------------------
// Calculating
// ---------------------------------------------------------------------------------------------------------------------

double DistributionsDialog::Read(std::string_view id) const {
  return ReadNumber(form_.ValueOf(id), session_.options.regional).value_or(MissingValue);
}

DistributionFigures DistributionsDialog::ReadBoxes() const {
  return {.statistic = Read("edpdf"),
          .first = Read("eddf"),
          .second = Read("eddf2"),
          .lower = Read("edlp"),
          .upper = Read("edup"),
          .third = Read("ed2p")};
}

void DistributionsDialog::Calculate() {
  DistributionFigures figures = ReadBoxes();
  if (!given_) {
    FindProbabilities(distribution_, figures);
    ShowFigures(figures, ProbabilityLine(distribution_, figures, session_.Format()));
  } else if (MayInvert(figures)) {
    FindStatistic(distribution_, *given_, figures);
    ShowFigures(figures, StatisticLine(distribution_, figures, session_.Format()));
  }
}

void DistributionsDialog::FindLimit(bool upperLimit) {
  DistributionFigures figures = ReadBoxes();
  if (!MayInvert(figures)) return;
  const double level =
      std::clamp(ParseReal(form_.ValueOf("combo_cl"), session_.options.regional), LeastLevel, GreatestLevel);
  form_.Update("combo_cl", [&](Control& list) {
    list.value = BoxText(level);
    const auto item = std::ranges::find(list.items, list.value);
    list.index = item == list.items.end() ? -1 : static_cast<int>(item - list.items.begin());
  });
  tellurix::FindLimit(distribution_, upperLimit, (1 - level / 100) / 2, figures);
  given_.reset();
  const Formatter format = session_.Format();
  ShowFigures(figures, distribution_ == Distribution::Poisson ? StatisticLine(distribution_, figures, format)
                                                              : ProbabilityLine(distribution_, figures, format));
}

bool DistributionsDialog::MayInvert(const DistributionFigures& figures) {
  if (distribution_ != Distribution::Poisson || figures.first == MissingValue || figures.first <= LargeCount) {
    return true;
  }
  return ShowMessage(session_, "This calculation can take a long time with large numbers.\n\nDo you wish to continue?",
                     YesNo | QuestionIcon, "Tellurix Poisson Inverse") == Reply::Yes;
}

// With all digits, so that a figure that was found can be taken on from.
std::string DistributionsDialog::BoxText(double x) const {
  return x == MissingValue ? "error" : Localized(GeneralText(x), session_.options.regional);
}

void DistributionsDialog::ShowFigures(const DistributionFigures& figures, const Value& line) {
  TextResult result{.text = line.text, .numbers = line.numbers, .name = "pdf", .fields = {}};
  const auto show = [&](const char* id, double figure) {
    const Control* box = form_.Find(id);
    if (!box->visible) return;
    // What was typed in stays as it is, but where it was held within its bounds.
    if (Read(id) != figure || figure == MissingValue) SetText(id, BoxText(figure));
    result.fields.push_back({.name = id, .mark = id, .text = form_.ValueOf(id), .numbers = {figure}});
  };
  show("edpdf", figures.statistic);
  show("edlp", figures.lower);
  show("edup", figures.upper);
  show("ed2p", figures.third);
  result.fields.push_back({.name = "line", .mark = "line", .text = line.text, .numbers = line.numbers});
  line_ = line;
  form_.Update("Line", [&](Control& label) { label.caption = line.text; });
  form_.Update("Save", [](Control& button) { button.enabled = true; });
  session_.results.Current().texts.push_back(std::move(result));
}

// ---------------------------------------------------------------------------------------------------------------------
// The report
// ---------------------------------------------------------------------------------------------------------------------

// Writes what was saved; the dialog stays where no report is chosen for it.
bool DistributionsDialog::Closing() {
  if (saved_.empty()) return true;
  TemplateMerge merge = session_.Merge();
  if (!merge.OpenTemplate("probcal.rtf")) return true;
  Report* report = EnsureReport(session_);
  if (!report) return false;
  Value lines = Value::Rich(saved_);
  lines.numbers = savedNumbers_;
  merge.SetField("gr", lines);
  merge.CloseTemplate();
  report->helpContext = form_.helpContext;
  merge.InsertMergedText(*report);
  return true;
}

std::shared_ptr<Form> MakeForm(Session& session, int number) {
  auto form = std::make_shared<Form>("pdf", "");
  const auto dialog = std::make_shared<DistributionsDialog>(session, *form);
  dialog->Choose(number);
  form->onChange = [dialog](const Control& control) { dialog->Changed(control); };
  form->onFocus = [dialog](const Control& control) { dialog->Focused(control); };
  form->onActivate = [dialog](const Control& control) { dialog->Activated(control); };
  form->onPress = [dialog](const Control& control) { dialog->Pressed(control); };
  form->onClose = [dialog] { return dialog->Closing(); };
  return form;
}

}  // namespace

void ShowDistribution(Session& session, int number) {
  std::shared_ptr<Form> form = session.distributions.lock();
  if (!form || !form->IsOpen()) {
    form = MakeForm(session, number);
    session.distributions = form;
  } else {
    form->Update("Dist", [&](Control& list) { list.index = number; });
    form->onChange(*form->Find("Dist"));
  }
  session.host.ShowForm(form);
  if (form->view) form->view("");  // the size that its window had may have been for other boxes
}

}  // namespace tellurix
