#include "host/Form.h"

#include <gtest/gtest.h>

namespace tellurix {
namespace {

Form Sample() {
  Form form("Sample", "A sample");
  form.AddText("edpdf", "&P =", "");
  form.AddCombo("pick", "Pick:", {"Alpha", "Beta"}, 0);
  form.AddCheck("box", "Men && &women", false);
  form.AddRadio("r1", "One", "First", true);
  form.AddRadio("r2", "Two", "First", false);
  form.AddRadio("r3", "One", "Second", true);
  form.Add({.kind = ControlKind::Grid, .id = "Dat", .cells = {{"a", "b"}, {"c"}}});
  form.AddButton("Calc", "&OK", ButtonRole::Default);
  form.AddButton("Cancel", "&Cancel", ButtonRole::Cancel);
  return form;
}

TEST(Form, IsActedOnOnlyWhileOpenAndOnWhatIsUsable) {
  Form form = Sample();
  EXPECT_FALSE(form.Set("edpdf", "1"));
  form.Open();
  EXPECT_TRUE(form.Set("EDPDF", "1"));
  EXPECT_EQ(form.ValueOf("edpdf"), "1");
  EXPECT_FALSE(form.Set("none", "1"));
  EXPECT_FALSE(form.Set("Calc", "1"));
  EXPECT_FALSE(form.Press("edpdf"));
  EXPECT_FALSE(form.Enter("edpdf", {{"1"}}));
  form.Update("edpdf", [](Control& c) { c.enabled = false; });
  EXPECT_FALSE(form.Set("edpdf", "2"));
  form.Update("edpdf", [](Control& c) { c.enabled = true, c.visible = false; });
  EXPECT_FALSE(form.Focus("edpdf"));
  EXPECT_EQ(form.FindByCaption("P ="), nullptr);
}

TEST(Form, SetsEachKindOfControl) {
  Form form = Sample();
  form.Open();
  EXPECT_TRUE(form.Set("pick", "BETA"));
  EXPECT_EQ(form.IndexOf("pick"), 1);
  EXPECT_EQ(form.ValueOf("pick"), "Beta");
  EXPECT_FALSE(form.Set("pick", "Gamma"));
  EXPECT_EQ(form.IndexOf("pick"), 1);
  form.Update("pick", [](Control& c) { c.editable = true; });
  EXPECT_TRUE(form.Set("pick", "Gamma"));
  EXPECT_EQ(form.IndexOf("pick"), -1);
  for (const char* on : {"-1", "on", "YES", "true"}) {
    form.Set("box", on);
    EXPECT_TRUE(form.IsChecked("box")) << on;
    form.Set("box", "off");
    EXPECT_FALSE(form.IsChecked("box"));
  }
  form.Set("r2", "on");
  EXPECT_FALSE(form.IsChecked("r1"));
  EXPECT_TRUE(form.IsChecked("r2"));
  EXPECT_TRUE(form.IsChecked("r3"));  // another group
  EXPECT_TRUE(form.Enter("Dat", {{"1", "2", "3"}, {}, {"9"}}));
  EXPECT_EQ(form.Find("Dat")->cells, (std::vector<std::vector<std::string>>{{"1", "2", "3"}, {"c"}, {"9"}}));
}

TEST(Form, ARadioIsSetOffOnlyByAnother) {
  Form form = Sample();
  form.Open();
  EXPECT_FALSE(form.Set("r1", "off"));
  EXPECT_TRUE(form.IsChecked("r1"));
  EXPECT_TRUE(form.Set("r2", "off"));  // it is
}

TEST(Form, FindsByCaption) {
  const Form form = Sample();
  const auto found = [&](std::string_view caption, std::string_view group = {}) {
    const Control* control = form.FindByCaption(caption, group);
    return control ? control->id : "none";
  };
  EXPECT_EQ(found("p ="), "edpdf");
  EXPECT_EQ(found("&P ="), "edpdf");
  EXPECT_EQ(found("pick"), "pick");
  EXPECT_EQ(found("Men & women:"), "box");
  EXPECT_EQ(found("Men && women"), "box");
  EXPECT_EQ(found("one"), "r1");
  EXPECT_EQ(found("One", "second"), "r3");
  EXPECT_EQ(found("Two", "Second"), "none");
  EXPECT_EQ(PlainCaption("&Select && go&"), "Select & go&");
}

TEST(Form, TellsItsListenerBeforeItsOwnCallbacks) {
  Form form = Sample();
  std::string order;
  int closes = 0;
  form.listener = [&](Form& f, const FormAction& action) {
    order += "L" + action.id + action.value + (f.IsChecked("box") ? "!" : "") + " ";
  };
  form.onChange = [&](const Control& c) { order += "C" + c.id + " "; };
  form.onPress = [&](const Control& c) { order += "P" + c.id + " "; };
  form.onClose = [&] { return ++closes == 3; };
  form.Open();
  form.Set("box", "on");
  form.Update("edpdf", [](Control& c) { c.value = "by itself"; });  // not heard
  form.Press("Calc");
  EXPECT_EQ(order, "Lboxon! Cbox LCalc! PCalc ");
  EXPECT_TRUE(form.IsOpen());  // its own callback decides
  EXPECT_FALSE(form.Close());  // vetoed
  EXPECT_TRUE(form.IsOpen());
  EXPECT_TRUE(form.Press("Cancel"));
  EXPECT_TRUE(form.IsOpen());
  EXPECT_TRUE(form.Press("Cancel"));
  EXPECT_FALSE(form.IsOpen());
  EXPECT_FALSE(form.Accepted());
}

TEST(Form, KeepsTheAnswerItClosedWith) {
  Form form = Sample();
  form.Open();
  EXPECT_TRUE(form.Press("Calc"));
  EXPECT_TRUE(form.Accepted());
  EXPECT_TRUE(form.Close());  // the window goes away behind the answer
  EXPECT_TRUE(form.Accepted());
  form.Open();
  form.Close();
  EXPECT_FALSE(form.Accepted());
}

}  // namespace
}  // namespace tellurix
