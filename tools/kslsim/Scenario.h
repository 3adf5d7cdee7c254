#pragma once

#include <map>

#include "tools/kslsim/Wire.h"

namespace kslsim {

// A place in a text, both counted from 1; the column counts bytes.
struct Place {
  size_t line = 1;
  size_t column = 1;
};

// A scenario that cannot be used. what() is "LINE:COLUMN: text".
class ScenarioError : public std::runtime_error {
 public:
  ScenarioError(Place place, const std::string& text)
    : std::runtime_error(std::to_string(place.line) + ":" + std::to_string(place.column) + ": " + text),
      mPlace(place) {}
  Place place() const { return mPlace; }

 private:
  Place mPlace;
};

// JSON with the place of each value by its pointer. Two keys of one name in an object and more than kDepth levels
// are errors as well: the first is a slip of the pen, the second no scenario needs.
struct PlacedJson {
  static constexpr size_t kDepth = 64;

  Json value;
  std::map<std::string, Place> places;

  // Throws ScenarioError.
  static PlacedJson parse(const std::string& text);

  // The place of the value, or of the nearest one around it that has a place.
  Place placeOf(std::string pointer) const;
};

// What the service does by itself, and when: a list of steps {"at": milliseconds, "do": ..., ...}. The steps stand
// in the order of time here, those of one time in the order of the text.
class Scenario {
 public:
  struct Step {
    int64_t at;
    Json step;  // without "at"
    Place place;
  };

  // Throws ScenarioError. Every step is tried out on a platform of its own, so that a level that is not there is
  // found now and not in the middle of a run.
  static Scenario parse(const std::string& text);

  // The same for a platform that has done these steps before.
  static Scenario parse(const std::string& text, const std::vector<Json>& before);

  const std::vector<Step>& steps() const { return mSteps; }

 private:
  std::vector<Step> mSteps;
};

}  // namespace kslsim
