#include <algorithm>
#include <cctype>
#include <cstdio>
#include <optional>
#include <stdexcept>

#include "vendelo-sdl2/Parameters.h"

namespace vendelo_sdl2 {

// Immortal, as parameters may be read while the process ends.
const ParameterLimits& NoLimit = *new ParameterLimits;

namespace {

using Limit = ParameterLimits::Limit;

struct TComparator {
  const char* Text;
  Limit::Compare Type;
};

// The longer ones first, as they begin with the shorter ones.
constexpr TComparator kComparators[] = {{"<=", Limit::MAX_INCLUSIVE},
                                        {">=", Limit::MIN_INCLUSIVE},
                                        {"=", Limit::EQUAL},
                                        {"<", Limit::MAX},
                                        {">", Limit::MIN}};

const TComparator& ReadComparator(const std::string& Block) {
  for (const auto& comparator : kComparators)
    if (Block.starts_with(comparator.Text)) return comparator;
  // The argument has not been read yet, so the message ends here.
  throw std::runtime_error("Unsupported comparator - ");
}

// What kind of argument the block has; the block as a whole is the class's ParseBlock.
Limit::LimitType parseBlock(const std::string& Argument) {
  if (Argument.empty()) throw std::runtime_error("Argument after comparator cannot be empty");
  if (Argument.front() != '"') return isIntOrDouble(Argument);
  if (Argument.length() == 1 || Argument.back() != '"') throw std::runtime_error("Missing closing quotes");
  return Limit::STRING;
}

double AsNumber(const std::string& Text, Limit::LimitType Type) {
  return Type == Limit::INTEGER ? static_cast<double>(std::stol(Text)) : std::stod(Text);
}

}  // namespace

Limit::LimitType isIntOrDouble(const std::string& text) {
  size_t separators = 0;
  for (size_t i = 0; i < text.length(); ++i) {
    if (std::isdigit(static_cast<unsigned char>(text[i])) != 0) continue;
    if ((text[i] != '.' && text[i] != ',') || i == 0 || ++separators > 1) return Limit::UNDEFINED;
  }
  if (text.empty()) return Limit::UNDEFINED;
  return separators == 0 ? Limit::INTEGER : Limit::FLOAT;
}

ParameterLimits::ParameterLimits() = default;

ParameterLimits::ParameterLimits(const std::string& limits) : mOriginalString(limits) {
  if (limits.empty()) return;
  size_t equalities = 0;
  for (size_t start = 0; start < limits.length();) {
    const size_t end = std::min(limits.find(LimitSeparator, start), limits.length());
    try {
      ParseBlock(limits.substr(start, end - start), equalities);
    } catch (const std::exception& error) {
      std::printf("Error parsing limit <%s>! Details: %s\n", limits.c_str(), error.what());
    }
    start = end + 1;
  }
  mOnlyEquals = mLimits.size() == equalities;
}

void ParameterLimits::ParseBlock(const std::string& Block, size_t& Equalities) {
  const TComparator& comparator = ReadComparator(Block);
  // Counted before the argument is looked at: a bad equality ends the rule that one equality has to match.
  if (comparator.Type == Limit::EQUAL) ++Equalities;
  std::string argument = Block.substr(std::string(comparator.Text).length());
  const Limit::LimitType type = parseBlock(argument);
  if (type == Limit::UNDEFINED) throw std::runtime_error("Unsupported limit type - " + argument);
  if (type == Limit::STRING) {
    if (comparator.Type != Limit::EQUAL)
      throw std::runtime_error("Inappropriate comparator for string type - " + argument);
    argument = argument.substr(1, argument.length() - 2);
  }
  mLimits.push_back({type, argument, comparator.Type});
}

std::string ParameterLimits::Check(const std::string& value) const {
  Limit::LimitType valueType = isIntOrDouble(value);
  if (valueType == Limit::UNDEFINED) valueType = Limit::STRING;
  std::optional<std::string> equalValue;
  std::optional<double> minVal;
  std::optional<double> maxVal;
  bool allOK = !mOnlyEquals;
  for (const auto& limit : mLimits) {
    bool limitOK = false;
    if (limit.Type == Limit::STRING) {
      // Equality is the only comparison of texts.
      if (!equalValue) equalValue = limit.Value;
      limitOK = value == limit.Value;
    } else if (valueType != Limit::STRING) {
      const double number = AsNumber(value, valueType);
      // A bound alone can only raise this, so a strict limit never refuses; an inclusive one does by its EQUAL bit.
      limitOK = true;
      if ((limit.CompareType & Limit::EQUAL) != 0) {
        if (limit.CompareType == Limit::EQUAL && !equalValue) equalValue = limit.Value;
        limitOK = number == AsNumber(limit.Value, limit.Type);
      }
      if ((limit.CompareType & Limit::MIN) != 0) {
        minVal = std::stod(limit.Value);
        limitOK = limitOK || number > *minVal;
      }
      if ((limit.CompareType & Limit::MAX) != 0) {
        maxVal = std::stod(limit.Value);
        limitOK = limitOK || number < *maxVal;
      }
    }
    allOK = limit.CompareType == Limit::EQUAL ? allOK || limitOK : allOK && limitOK;
  }
  if (allOK) return value;
  if (equalValue) return *equalValue;
  if (valueType != Limit::STRING) {
    // The text of a double in every case: a whole bound has six decimals too.
    const double v = std::stod(value);
    if (minVal && *minVal >= v) return std::to_string(*minVal);
    if (maxVal && v >= *maxVal) return std::to_string(*maxVal);
  }
  return value;
}

}  // namespace vendelo_sdl2
