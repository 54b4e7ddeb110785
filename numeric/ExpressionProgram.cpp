#include "numeric/ExpressionProgram.h"

#include <algorithm>

namespace tellurix {

ExpressionProgram::Ending ExpressionProgram::Run(std::span<const double> inputs, double& result) {
  std::ranges::copy(inputs, values_.begin());
  double* place = values_.data() + inputs_;
  for (std::size_t at = 0;;) {
    const Node& node = nodes_[at];
    switch (node.kind) {
      case Node::Kind::Step:
        if (!node.operation.Compute(ValueOf(node.a), ValueOf(node.b), *place++)) return Ending::Missing;
        at = node.next[0];
        break;
      case Node::Kind::Question:
        at = node.next[AnswerOf(node.question, ValueOf(node.a)) ? 1 : 0];
        break;
      case Node::Kind::Number:
        result = ValueOf(node.a) + 0.0;
        return Ending::Number;
      case Node::Kind::Missing:
        return Ending::Missing;
      case Node::Kind::NotRecordable:
        return Ending::NotRecordable;
      case Node::Kind::Open:
        return Ending::Open;
    }
  }
}

void ExpressionProgram::Begin() {
  at_ = 0;
  results_ = 0;
}

// A refusal belongs to the numbers: the step that refuses is there already.
void ExpressionProgram::End(ExpressionReduction::Outcome outcome, Operand result) {
  Node& node = nodes_[at_];
  node.a = result;
  if (outcome == ExpressionReduction::Outcome::Number) node.kind = Node::Kind::Number;
  if (outcome == ExpressionReduction::Outcome::Malformed) node.kind = Node::Kind::Missing;
  if (outcome == ExpressionReduction::Outcome::GivenUp) node.kind = Node::Kind::NotRecordable;
}

Operand ExpressionProgram::Constant(double value) {
  const auto known = std::ranges::find(constants_, value);
  const auto index = static_cast<std::uint32_t>(known - constants_.begin());
  if (known == constants_.end()) constants_.push_back(value);
  return {.index = index, .isConstant = true};
}

Operand ExpressionProgram::Step(const ExpressionOperation& operation, Operand a, Operand b) {
  if (nodes_[at_].kind == Node::Kind::Open) {
    const std::size_t next = NewNode();
    nodes_[at_] = {.kind = Node::Kind::Step, .operation = operation, .a = a, .b = b, .next = {next, next}};
  }
  at_ = nodes_[at_].next[0];
  const std::size_t index = inputs_ + results_++;
  if (values_.size() <= index) values_.resize(index + 1);
  return {.index = static_cast<std::uint32_t>(index)};
}

void ExpressionProgram::Asked(Question question, Operand operand, bool answer) {
  if (nodes_[at_].kind == Node::Kind::Open) {
    const std::size_t no = NewNode();
    const std::size_t yes = NewNode();
    nodes_[at_] = {.kind = Node::Kind::Question, .question = question, .a = operand, .next = {no, yes}};
  }
  at_ = nodes_[at_].next[answer ? 1 : 0];
}

std::size_t ExpressionProgram::NewNode() {
  nodes_.emplace_back();
  return nodes_.size() - 1;
}

}  // namespace tellurix
