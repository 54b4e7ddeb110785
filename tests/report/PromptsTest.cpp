#include "report/Prompts.h"

#include <gtest/gtest.h>

#include "tests/FakeHost.h"

namespace tellurix {
namespace {

void Accept(Form& form) { EXPECT_TRUE(form.Press(form.DefaultButton()->id)); }
void Refuse(Form& form) { EXPECT_TRUE(form.Close()); }

std::string Captions(const Form& form, ControlKind kind) {
  std::string text;
  for (const Control& control : form.Controls()) {
    if (control.kind == kind) text += (text.empty() ? "" : "|") + control.caption;
  }
  return text;
}

std::string Joined(const std::vector<std::string>& items) {
  std::string text;
  for (const std::string& item : items) text += (text.empty() ? "" : "|") + item;
  return text;
}

class PromptsTest : public ::testing::Test {
 protected:
  FakeHost host;
  FakeDocuments documents;
  Options options;
  int helpContext = 77;
  int saves = 0;
  Prompts prompts{host, documents, options, helpContext, [this] { ++saves; }};
};

TEST_F(PromptsTest, InputValueTellsItsCancelByAWord) {
  host.busy = true;
  host.forms = {[](Form& form) {
                  EXPECT_EQ(form.Name(), "InpFrm");
                  EXPECT_EQ(form.title, "Title");
                  EXPECT_EQ(form.helpContext, 77);
                  EXPECT_EQ(PlainCaption(form.Find("Prompt")->caption), "Men & women");
                  EXPECT_EQ(form.ValueOf("Text"), "5");
                  form.Set("Text", "7");
                  Accept(form);
                },
                [](Form& form) {
                  form.Set("Text", "");
                  Accept(form);
                },
                [](Form& form) {
                  form.Set("Text", "~~Cancel");
                  Accept(form);
                },
                Refuse, [](Form& form) { form.Press("Cancel"); }};
  EXPECT_EQ(prompts.InputValue("Men & women", "Title", "5"), "7");
  EXPECT_EQ(prompts.InputValue("a", "b", "5"), "");  // a valid answer
  for (int i = 0; i < 3; ++i) EXPECT_EQ(prompts.InputValue("a", "b", "5"), "~~Cancel");
  EXPECT_TRUE(host.busy);  // restored
  EXPECT_FALSE(host.busyWhenAsked);
}

TEST_F(PromptsTest, ShowOptionsNumbersChecksAndRadiosInOneSequence) {
  host.forms = {[](Form& form) {
                  EXPECT_EQ(form.Name(), "OptForm");
                  EXPECT_EQ(Captions(form, ControlKind::Check), "first|last");
                  EXPECT_EQ(Captions(form, ControlKind::Radio), "one|two|three");
                  EXPECT_EQ(form.DefaultButton()->id, "Calc");
                  EXPECT_FALSE(form.IsChecked("Option0"));
                  EXPECT_TRUE(form.IsChecked("Option1"));  // the first radio, none being set
                  form.Set("Option2", "on");
                  form.Set("Option4", "on");
                  Accept(form);
                },
                [](Form& form) {
                  EXPECT_FALSE(form.IsChecked("Option1"));
                  EXPECT_TRUE(form.IsChecked("Option3"));
                  EXPECT_TRUE(form.IsChecked("Option4"));
                  Accept(form);
                },
                [](Form& form) {
                  EXPECT_TRUE(form.IsChecked("Option1"));  // presets serve one dialog only
                  EXPECT_FALSE(form.IsChecked("Option4"));
                  Refuse(form);
                }};
  const char* items = "first|^one|^two|^three|last";
  ASSERT_TRUE(prompts.ShowOptions(items, "t"));
  std::vector<bool> on;
  for (int i = -1; i <= 5; ++i) on.push_back(prompts.OptionOn(i));
  EXPECT_EQ(on, (std::vector<bool>{false, false, false, true, false, true, false}));
  prompts.PresetOption(3, true);
  prompts.PresetOption(4, true);
  prompts.PresetOption(0, true);
  prompts.PresetOption(0, false);
  ASSERT_TRUE(prompts.ShowOptions(items, "t"));
  EXPECT_TRUE(prompts.OptionOn(3));
  EXPECT_FALSE(prompts.OptionOn(0));
  EXPECT_FALSE(prompts.ShowOptions(items, "t"));
}

TEST_F(PromptsTest, ShowOptionsWithNothingButCombos) {
  options.regional.decimalSymbol = ",";
  host.forms = {[](Form& form) {
                  EXPECT_EQ(Captions(form, ControlKind::Check) + Captions(form, ControlKind::Radio), "");
                  EXPECT_EQ(Captions(form, ControlKind::Combo), "Confidence (%)|Population mean");
                  EXPECT_EQ(Joined(form.Find("Combo0")->items), "0,0|0,1|0,2|0,3");
                  EXPECT_EQ(form.ValueOf("Combo0"), "0,2");
                  EXPECT_FALSE(form.Set("Combo0", "0,25"));  // not on the list
                  EXPECT_TRUE(form.Set("Combo0", "0,1"));
                  EXPECT_TRUE(form.Set("Combo1", "1,25"));  // typed
                  Accept(form);
                },
                [](Form& form) {
                  EXPECT_EQ(Captions(form, ControlKind::Combo), "");  // filled anew for each dialog
                  Refuse(form);
                }};
  prompts.FillCombo(0, "Confidence (%)", 0, 0.3, 0.1, "0.0", 2);
  prompts.FillEntry(1, "Population mean", "0");
  ASSERT_TRUE(prompts.ShowOptions("", "Single sample t test"));
  EXPECT_EQ(host.formTitles.back(), "Single sample t test");
  EXPECT_EQ(prompts.ComboText(0), "0,1");
  EXPECT_EQ(prompts.ComboIndex(0), 1);
  EXPECT_EQ(prompts.ComboReal(1), 1.25);
  EXPECT_EQ(prompts.ComboIndex(1), -1);
  EXPECT_FALSE(prompts.ShowOptions("", "t"));
}

TEST_F(PromptsTest, FillComboCountsFromToStep) {
  const struct {
    double from, to, step;
    const char* format;
    const char* items;
  } cases[] = {{2, 5, 1, "0", "2|3|4|5"},
               {80, 95, 5, "0", "80|85|90|95"},
               {0, 1, 0.25, "0.00", "0.00|0.25|0.50|0.75|1.00"},
               {5, 1, -2, "0", "5|3|1"},
               {3, 2, 1, "0", ""}};
  for (const auto& c : cases) {
    prompts.FillCombo(0, "x", c.from, c.to, c.step, c.format, 0);
    host.forms = {[&](Form& form) {
      EXPECT_EQ(Joined(form.Find("Combo0")->items), c.items);
      Accept(form);
    }};
    prompts.ShowOptions("", "t");
  }
}

TEST_F(PromptsTest, SelectConfidenceAsksOnlyWithoutADefault) {
  options.DefaultCI = 99;
  EXPECT_EQ(prompts.SelectConfidence(), 0.99);
  options.DefaultCI = 100;  // no confidence
  EXPECT_EQ(prompts.SelectConfidence(), 0.95);
  EXPECT_TRUE(host.formTitles.empty());
  options.DefaultCI = 0;
  const auto expecting = [](const char* preset, const char* choice) {
    return [=](Form& form) {
      EXPECT_EQ(form.title, "Select confidence interval");
      EXPECT_EQ(form.Find("Combo0")->caption, "Confidence (%)");
      EXPECT_EQ(Joined(form.Find("Combo0")->items), "80|85|90|95|99");
      EXPECT_EQ(form.ValueOf("Combo0"), preset);
      form.Set("Combo0", choice);
      *choice ? Accept(form) : Refuse(form);
    };
  };
  const auto cancelling = [](Form& form) {
    form.Set("Combo0", "99");
    Refuse(form);
  };
  host.forms = {expecting("95", "90"), cancelling, expecting("90", "85")};  // the last choice, a cancel being none
  EXPECT_EQ(prompts.SelectConfidence(), 0.9);
  EXPECT_EQ(prompts.SelectConfidence(), std::nullopt);
  EXPECT_EQ(prompts.SelectConfidence(), 0.85);
}

TEST_F(PromptsTest, AnalysisOptionsEditsTheOptions) {
  host.forms = {[](Form& form) {
                  EXPECT_EQ(form.title, "Analysis Options");
                  EXPECT_EQ(Captions(form, ControlKind::Combo),
                            "Decimal places for statistics|Decimal places for P values");
                  EXPECT_EQ(Joined(form.Find("Combo0")->items), "2|3|4|5|6|7|8|9|10|11|12");
                  EXPECT_EQ(Joined(form.Find("Combo1")->items), "3|4|5|6|7");
                  EXPECT_EQ(form.ValueOf("Combo0") + form.ValueOf("Combo1"), "63");
                  EXPECT_EQ(Captions(form, ControlKind::Check), "Use a default CI|Select data by group identifier");
                  EXPECT_EQ(Captions(form, ControlKind::Radio),
                            "Default 95% CI|Default 99% CI|Default 90% CI|Default 85% CI|Default 80% CI");
                  EXPECT_FALSE(form.IsChecked("Option0"));
                  EXPECT_TRUE(form.IsChecked("Option1"));
                  form.Set("Combo0", "12");
                  form.Set("Combo1", "7");
                  form.Set("Option0", "on");
                  form.Set("Option4", "on");
                  form.Set("Option6", "on");
                  Accept(form);
                },
                [](Form& form) {  // it opens on what is in force
                  EXPECT_TRUE(form.IsChecked("Option0") && form.IsChecked("Option4") && form.IsChecked("Option6"));
                  EXPECT_EQ(form.ValueOf("Combo0") + form.ValueOf("Combo1"), "127");
                  form.Set("Combo0", "2");
                  Refuse(form);
                },
                [](Form& form) {
                  form.Set("Combo0", "13");
                  form.Set("Combo1", "two");
                  form.Set("Option0", "off");
                  form.Set("Option6", "off");
                  Accept(form);
                }};
  ASSERT_TRUE(prompts.AnalysisOptions());
  EXPECT_EQ(std::vector({options.DecimalPlaces, options.PDecimalPlaces, options.DefaultCI, int{options.UseGroupID}}),
            (std::vector{12, 7, 85, 1}));
  EXPECT_EQ(host.beeps, 0);
  EXPECT_EQ(saves, 1);
  EXPECT_FALSE(prompts.AnalysisOptions());
  EXPECT_EQ(options.DecimalPlaces, 12);
  EXPECT_EQ(saves, 1);
  ASSERT_TRUE(prompts.AnalysisOptions());
  EXPECT_EQ(std::vector({options.DecimalPlaces, options.PDecimalPlaces, options.DefaultCI, int{options.UseGroupID}}),
            (std::vector{6, 3, 0, 0}));
  EXPECT_EQ(host.beeps, 2);
  EXPECT_EQ(saves, 2);
  const int confidences[] = {95, 99, 90, 85, 80};
  for (int i = 0; i < 5; ++i) {
    host.forms = {[&](Form& form) {
      form.Set("Option0", "on");
      form.Set("Option" + std::to_string(i + 1), "on");
      Accept(form);
    }};
    ASSERT_TRUE(prompts.AnalysisOptions());
    EXPECT_EQ(options.DefaultCI, confidences[i]);
  }
}

TEST_F(PromptsTest, PickFromListTellsRowsApartThatReadAlike) {
  class Namesakes : public FakeDocuments {
    std::string ReportName(int) const override { return "visit.rtf"; }
  } namesakes;
  for (int i = 0; i < 3; ++i) namesakes.NewReport();
  Prompts asking(host, namesakes, options, helpContext, {});
  host.forms = {[](Form& form) {
    EXPECT_EQ(Joined(form.Find("List")->items), "visit.rtf|visit.rtf (2)|visit.rtf (3)|New Report");
    EXPECT_EQ(form.IndexOf("List"), 1);
    EXPECT_TRUE(form.Set("List", "visit.rtf (3)"));
    Accept(form);
  }};
  EXPECT_EQ(asking.PickFromList("Report", 1), 2);
}

TEST_F(PromptsTest, PickFromListKnowsItsRowsAndAnswers) {
  documents.NewReport();
  documents.NewReport();
  documents.NewWorkbook().AddSheet("Second");
  documents.NewWorkbook();
  const auto picking = [](const char* title, const char* label, const char* rows, const char* row) {
    return [=](Form& form) {
      EXPECT_EQ(form.Name(), "ListForm");
      EXPECT_EQ(form.title, title);
      EXPECT_EQ(form.Find("Label")->caption, label);
      EXPECT_EQ(Joined(form.Find("List")->items), rows);
      EXPECT_EQ(form.DefaultButton()->caption + form.Find("Cancel")->caption, "&Select&Cancel");
      EXPECT_TRUE(form.Set("List", row));
      Accept(form);
    };
  };
  const char* reports = "Report1|Report2|New Report";
  host.forms = {picking("Select report for output", "Output destination:", reports, "Report2"),
                picking("Select report for output", "Output destination:", reports, "New Report"), Refuse};
  EXPECT_EQ(prompts.PickFromList("Report"), 1);
  EXPECT_EQ(prompts.PickFromList("Report"), -1);
  EXPECT_EQ(prompts.PickFromList("Report"), -2);

  const char* sheets = "Book1: Sheet1|Book1: Second|New Sheet in Book1|Book2: Sheet1|New Sheet in Book2|New Book";
  const char* choices[] = {"Book1: Second", "New Sheet in Book2", "New Book"};
  for (const char* choice : choices) {
    host.forms.push_back(picking("Select worksheet for output", "Output destination:", sheets, choice));
  }
  EXPECT_EQ(prompts.PickFromList("Worksheet"), 1);
  EXPECT_EQ(prompts.PickFromList("Worksheet"), 4);
  EXPECT_EQ(prompts.PickFromList("Worksheet"), -1);
  const auto rows = prompts.WorksheetRows();
  ASSERT_EQ(rows.size(), 5u);
  EXPECT_EQ(rows[1].workbook * 10 + rows[1].sheet, 2);
  EXPECT_EQ(rows[4].workbook * 10 + rows[4].sheet, 10);

  host.forms = {picking("Select file type", "Valid file formats:",
                        "Tellurix Workbook|Microsoft Excel Workbook|Tabbed Text Worksheet|Comma Separated Vector Data "
                        "File|Morvane Tabula (DOS) Worksheet|Rich Text Report|Plain (ASCII) Text Report",
                        "Plain (ASCII) Text Report"),
                [](Form& form) { form.Activate("List"); }};
  EXPECT_EQ(prompts.PickFromList("File"), 6);  // no row for something new
  EXPECT_EQ(prompts.PickFromList("File"), 0);  // a double-click selects
}

}  // namespace
}  // namespace tellurix
