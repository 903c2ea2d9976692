// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/surfaces/Selection.h"

#include <algorithm>
#include <cmath>
#include <deque>

#include <muParser.h>

#include "flight/surfaces/SelectionText.h"
#include <velorn/flight/Error.h>

namespace Velorn::Flights {

struct Selection::Parser {
  mu::Parser expression;
  std::deque<double> values;  // of all variables; their places stay
  std::vector<double*> used;  // of those in the expression, by name

  static double* makeVariable(const char* /*name*/, void* parser) {
    return &static_cast<Parser*>(parser)->values.emplace_back(0.0);
  }
};

namespace {

double negated(double value) {
  return value == 0.0 ? 1.0 : 0.0;
}

constexpr int precedenceOfNot = mu::prLOGIC;  // below comparisons, above `and`

/// The parser's own messages show operators that the user has not written.
const char* textOf(const mu::ParserError& error) {
  switch (error.GetCode()) {
    case mu::ecUNEXPECTED_EOF:
      return "something is missing at the end";
    case mu::ecMISSING_PARENS:
      return "a parenthesis is not closed";
    case mu::ecUNEXPECTED_PARENS:
      return "this parenthesis has no place here";
    default:
      return "not understood here";
  }
}

}  // namespace

Selection::Selection(const std::string& text) {
  if (text.find_first_not_of(" \t\r\n") == std::string::npos) return;
  refuseMisleading(text);
  parser_ = std::make_unique<Parser>();
  auto& expression = parser_->expression;
  try {
    expression.DefineInfixOprt("!", negated, precedenceOfNot);
    expression.SetVarFactory(Parser::makeVariable, parser_.get());
    expression.SetExpr(withOperators(text));
    expression.Eval();
    for (const auto& [name, value] : expression.GetUsedVar()) {
      names_.push_back(name);
      parser_->used.push_back(value);
    }
  } catch (const mu::ParserError& error) {
    throwFault(text, textOf(error), static_cast<std::size_t>(std::max(0, error.GetPos())));
  }
}

Selection::~Selection() = default;
Selection::Selection(Selection&&) noexcept = default;
Selection& Selection::operator=(Selection&&) noexcept = default;

bool Selection::selects(const std::vector<double>& values) {
  if (isEmpty()) return true;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (std::isnan(values[i])) return false;
    *parser_->used[i] = values[i];
  }
  const double result = parser_->expression.Eval();
  return result != 0.0 && !std::isnan(result);
}

}  // namespace Velorn::Flights
