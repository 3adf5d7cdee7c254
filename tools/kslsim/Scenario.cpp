#include "tools/kslsim/Scenario.h"

#include <algorithm>
#include <set>

#include "tools/kslsim/Simulator.h"

namespace kslsim {
namespace {

// An iterator over the text that tells, by a counter outside, how far the parser has read; the parser itself does
// not say where a value stood.
class CountingIterator {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  CountingIterator(const char* at, size_t* count) : mAt(at), mCount(count) {}
  reference operator*() const { return *mAt; }
  CountingIterator& operator++() {
    ++mAt;
    ++*mCount;
    return *this;
  }
  bool operator==(const CountingIterator& other) const { return mAt == other.mAt; }
  bool operator!=(const CountingIterator& other) const { return mAt != other.mAt; }

 private:
  const char* mAt;
  size_t* mCount;
};

Place placeAt(const std::string& text, size_t offset) {
  Place place;
  for (size_t i = 0; i < offset && i < text.size(); ++i) {
    place.column = text[i] == '\n' ? 1 : place.column + 1;
    place.line += text[i] == '\n';
  }
  return place;
}

// Builds the value and notes the places. Where a value begins follows from where the one before it ended: between
// them stand only blanks, commas and colons.
class Builder : public nlohmann::json_sax<Json> {
 public:
  Builder(const std::string& text, const size_t* count) : mText(text), mCount(count) {}

  bool null() override { return put(nullptr); }
  bool boolean(bool value) override { return put(value); }
  bool number_integer(number_integer_t value) override { return put(value); }
  bool number_unsigned(number_unsigned_t value) override { return put(value); }
  bool number_float(number_float_t value, const string_t&) override { return put(value); }
  bool string(string_t& value) override { return put(value); }
  bool binary(binary_t&) override { return false; }
  bool start_object(size_t) override { return open(Json::object()); }
  bool start_array(size_t) override { return open(Json::array()); }
  bool end_object() override { return close(); }
  bool end_array() override { return close(); }

  bool key(string_t& name) override {
    const Place place = next();
    if (mOpen.back()->contains(name)) throw ScenarioError(place, "the key \"" + name + "\" stands here twice");
    mKey = name;
    return true;
  }

  bool parse_error(size_t position, const std::string&, const nlohmann::detail::exception& error) override {
    std::string text = error.what();  // "[json.exception...] parse error at line L, column C: what is wrong"
    if (const size_t colon = text.find(": "); colon != std::string::npos) text = text.substr(colon + 2);
    throw ScenarioError(placeAt(mText, position ? position - 1 : 0), text);
  }

  PlacedJson result;

 private:
  Place next() {
    size_t begin = mEnd;
    while (begin < mText.size() && std::string_view(" \t\r\n,:").find(mText[begin]) != std::string_view::npos)
      ++begin;
    mEnd = *mCount;
    return placeAt(mText, begin);
  }

  Json& place(Json value) {
    const Place place = next();
    Json* slot = &result.value;
    std::string pointer;
    if (!mOpen.empty()) {
      Json& parent = *mOpen.back();
      const Json::json_pointer above(mPointers.back());
      pointer = (parent.is_array() ? above / parent.size() : above / mKey).to_string();
      slot = parent.is_array() ? &parent.emplace_back() : &parent[mKey];
    }
    *slot = std::move(value);
    result.places[pointer] = place;
    mLastPointer = pointer;
    mLastPlace = place;
    return *slot;
  }

  bool put(Json value) {
    place(std::move(value));
    return true;
  }

  bool open(Json value) {
    Json& slot = place(std::move(value));
    if (mOpen.size() >= PlacedJson::kDepth) throw ScenarioError(mLastPlace, "too many levels");
    mOpen.push_back(&slot);
    mPointers.push_back(mLastPointer);
    return true;
  }

  bool close() {
    next();
    mOpen.pop_back();
    mPointers.pop_back();
    return true;
  }

  const std::string& mText;
  const size_t* mCount;
  size_t mEnd = 0;
  std::vector<Json*> mOpen;  // a parent grows only while none of its children is open
  std::vector<std::string> mPointers;
  std::string mKey, mLastPointer;
  Place mLastPlace;
};

}  // namespace

PlacedJson PlacedJson::parse(const std::string& text) {
  size_t count = 0;
  Builder builder(text, &count);
  const char* begin = text.data();
  Json::sax_parse(CountingIterator(begin, &count), CountingIterator(begin + text.size(), &count), &builder);
  return std::move(builder.result);
}

Place PlacedJson::placeOf(std::string pointer) const {
  for (;;) {
    const auto found = places.find(pointer);
    if (found != places.end()) return found->second;
    if (pointer.empty()) return {};
    pointer.erase(pointer.rfind('/'));
  }
}

Scenario Scenario::parse(const std::string& text) { return parse(text, {}); }

Scenario Scenario::parse(const std::string& text, const std::vector<Json>& before) {
  PlacedJson json = PlacedJson::parse(text);
  if (!json.value.is_array()) throw ScenarioError(json.placeOf(""), "expected a list of steps");
  Scenario out;
  for (size_t i = 0; i < json.value.size(); ++i) {
    const std::string pointer = "/" + std::to_string(i);
    Json& step = json.value[i];
    if (!step.is_object()) throw ScenarioError(json.placeOf(pointer), "expected a step, an object");
    if (!step.contains("at")) throw ScenarioError(json.placeOf(pointer), "\"at\" is missing");
    if (!step["at"].is_number_unsigned() || step["at"] > (int64_t(1) << 53))
      throw ScenarioError(json.placeOf(pointer + "/at"), "expected milliseconds from the start, 0 or more");
    const int64_t at = step["at"].get<int64_t>();
    step.erase("at");
    out.mSteps.push_back({at, step, json.placeOf(pointer)});
  }
  // The place of a complaint below a step is found by its index in the text, so sort indices, not steps.
  std::vector<size_t> order(out.mSteps.size());
  for (size_t i = 0; i < order.size(); ++i) order[i] = i;
  std::stable_sort(order.begin(), order.end(),
                   [&](size_t a, size_t b) { return out.mSteps[a].at < out.mSteps[b].at; });

  Simulator trial([] { return int64_t(0); });
  for (const Json& step : before) trial.apply(step);
  std::vector<Step> sorted;
  for (size_t index : order) {
    try {
      trial.apply(out.mSteps[index].step);
    } catch (const InputError& error) {
      throw ScenarioError(json.placeOf("/" + std::to_string(index) + error.path()), error.what());
    }
    sorted.push_back(out.mSteps[index]);
  }
  out.mSteps = std::move(sorted);
  return out;
}

}  // namespace kslsim
