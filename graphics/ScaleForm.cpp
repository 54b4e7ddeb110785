#include "graphics/ScaleForm.h"

#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "graphics/Scale.h"
#include "host/Form.h"
#include "numeric/Rounding.h"

namespace tellurix {

namespace {

constexpr const char* Title = "Scale Limits";

// The controls of one axis, and the limits that they stand for.
class AxisLimits {
 public:
  AxisLimits(Form& form, const Regional& regional, std::string axis, double& low, double& high, bool logarithmic)
      : form_(form), regional_(regional), axis_(std::move(axis)), low_(low), high_(high), logarithmic_(logarithmic) {
    AddField("Low", "Lower limit:", low_);
    AddField("High", "Upper limit:", high_);
    form_.AddList(axis_ + "Scale", "Resulting scale:", Ticks(low_, high_), -1).group = Group();
  }

  bool Owns(const std::string& id) const { return id == axis_ + "Low" || id == axis_ + "High"; }

  void ShowScale() {
    const auto low = Limit("Low", low_), high = Limit("High", high_);
    form_.Update(axis_ + "Scale", [&](Control& list) {
      list.items = low && high ? Ticks(*low, *high) : std::vector<std::string>();
      list.index = -1;
    });
  }

  bool IsValid() const { return Limit("Low", low_) && Limit("High", high_); }

  void Take() {
    const double low = *Limit("Low", low_), high = *Limit("High", high_);
    low_ = low;
    high_ = high;
  }

 private:
  std::string Group() const { return axis_ + " axis"; }

  std::string TextOf(double limit) const {
    return Localized(GeneralText(logarithmic_ ? std::exp(limit) : limit), regional_);
  }
  void AddField(const char* end, const char* caption, double limit) {
    form_.AddText(axis_ + end, caption, TextOf(limit)).group = Group();
  }

  // An untouched field stands for the limit itself, of which it shows but 15 digits.
  std::optional<double> Limit(const char* end, double standing) const {
    const std::string& text = form_.ValueOf(axis_ + end);
    if (text == TextOf(standing)) return standing;
    const auto typed = ReadNumber(text, regional_);
    if (!typed || !std::isfinite(*typed)) return std::nullopt;
    if (!logarithmic_) return typed;
    return *typed > 0 ? std::optional(std::log(*typed)) : std::nullopt;
  }

  std::vector<std::string> Ticks(double low, double high) const {
    std::vector<std::string> rows;
    for (TickLabel& label : TickLabels(ChooseScale(low, high), regional_, logarithmic_)) {
      rows.push_back(std::move(label.text));
    }
    return rows;
  }

  Form& form_;
  const Regional& regional_;
  std::string axis_;
  double& low_;
  double& high_;
  bool logarithmic_;
};

}  // namespace

bool RunScaleForm(Host& host, Page& page, bool& requestScales, bool needsY, const Regional& regional, int helpContext) {
  Form form("ScaleForm", Title);
  form.helpContext = helpContext;
  std::vector<AxisLimits> axes;
  axes.reserve(2);
  axes.emplace_back(form, regional, "X", page.XLow, page.XHigh, page.LogX);
  if (needsY) axes.emplace_back(form, regional, "Y", page.YLow, page.YHigh, page.LogY);
  form.AddCheck("RequestScales", "Request scale limits for each graph", requestScales);
  form.AddButton("OK", "&OK", ButtonRole::Default);
  form.AddButton("Cancel", "&Cancel", ButtonRole::Cancel);
  form.onChange = [&](const Control& control) {
    for (AxisLimits& axis : axes) {
      if (axis.Owns(control.id)) axis.ShowScale();
    }
  };
  form.onPress = [&](const Control& control) {
    if (control.id != "OK") return;
    for (const AxisLimits& axis : axes) {
      if (axis.IsValid()) continue;
      host.ShowMessage({.text = "Lower and upper limit must be numbers.", .title = Title, .style = WarningIcon});
      return;
    }
    form.Finish(true);
  };
  const NormalPointerHere pointer(host);
  if (!host.RunForm(form)) return false;
  for (AxisLimits& axis : axes) axis.Take();
  requestScales = form.IsChecked("RequestScales");
  return true;
}

}  // namespace tellurix
