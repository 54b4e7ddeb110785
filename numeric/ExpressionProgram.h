// The recorded steps of one expression, for numbers other than those they were recorded with.
//
// The steps are a tree: every question about a number that was asked while recording is a fork, and the way that was
// not taken stays open until numbers come along that take it and are recorded in their turn.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "numeric/ExpressionReduction.h"

namespace tellurix {

class ExpressionProgram : public ExpressionRecorder {
 public:
  // `inputs`: how many numbers go in. Input i is operand i.
  explicit ExpressionProgram(std::size_t inputs) : inputs_(inputs), nodes_(1), values_(inputs) {}

  enum class Ending { Number, Missing, NotRecordable, Open };

  // Plays the steps for these numbers, which are as their texts stand for them. Open: nothing is recorded yet.
  Ending Run(std::span<const double> inputs, double& result);

  // Whether more can be recorded.
  bool HasRoom() const { return nodes_.size() < MaxNodes; }

  // A recording: Begin, the steps of one reduction, End.
  void Begin();
  void End(ExpressionReduction::Outcome outcome, Operand result);

  Operand Constant(double value) override;
  Operand Step(const ExpressionOperation& operation, Operand a, Operand b) override;
  void Asked(Question question, Operand operand, bool answer) override;

 private:
  static constexpr std::size_t MaxNodes = 200000;

  struct Node {
    enum class Kind { Open, Step, Question, Number, Missing, NotRecordable };
    Kind kind = Kind::Open;
    Question question = Question::IsNegative;
    ExpressionOperation operation;
    Operand a, b;
    std::size_t next[2] = {0, 0};  // of a question: no, yes
  };

  double ValueOf(const Operand& operand) const {
    const double value = operand.isConstant ? constants_[operand.index] : values_[operand.index];
    return operand.isNegated ? -value : value;
  }
  std::size_t NewNode();

  std::size_t inputs_;
  std::vector<Node> nodes_;
  std::vector<double> constants_;
  std::vector<double> values_;  // inputs, then results in the order of the steps
  std::size_t at_ = 0;          // of the recording
  std::size_t results_ = 0;
};

}  // namespace tellurix
