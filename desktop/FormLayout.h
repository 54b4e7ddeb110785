// Where the widgets of a form's controls stand in its dialog.
#pragma once

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QPushButton>
#include <QVBoxLayout>
#include <map>
#include <string>

#include "host/Form.h"

class QLabel;

namespace tellurix {

class FormLayout {
 public:
  FormLayout(QWidget& dialog, const Form& form);

  // Adds a control's widget below what is there. The label that was made for it; null where its caption stands in the
  // widget, in a frame or nowhere.
  QLabel* Add(const Control& control, QWidget& widget);

  void Finish();  // the buttons, beneath all others

 private:
  // Buttons in rows, for what is typed in a line above them. They take no focus, and are no larger than their texts ask
  // for.
  struct KeyPad {
    QGridLayout* grid = nullptr;
    int row = -1;
    int column = 0;

    void Add(QPushButton& key, bool startsRow);
  };

  QVBoxLayout* LayoutOf(const Control& control);
  void AddButton(const Control& control, QPushButton& button);
  void AddKey(const Control& control, QPushButton& key);
  QLabel* AddRow(const Control& control, QWidget& widget);
  QLabel* AddBelow(const Control& control, QWidget& widget);
  QLabel* MakeLabel(const Control& control, QWidget& widget);

  QWidget& dialog_;
  QVBoxLayout* outer_;
  QBoxLayout* frames_;
  QDialogButtonBox* buttons_;
  QFormLayout* rows_ = nullptr;  // runs of labelled controls stand in one aligned block
  std::map<std::string, QVBoxLayout*> groups_;
  std::map<std::string, KeyPad> pads_;
};

}  // namespace tellurix
