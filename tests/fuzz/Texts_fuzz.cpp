// UTF-8, numbers in text and text in numbers.
#include <cstring>
#include <stdexcept>
#include <vector>

#include "tests/fuzz/Target.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/Saturate.h"

namespace {

void walk(const std::string& text) {
  for (const char* at = text.c_str(); *at;) {
    const char* end = nullptr;
    MyUtils::GetUTF8CodePoint(at, &end);
    ++at;
  }
  MyUtils::GetUTF8CodePoint(text.c_str(), nullptr);
  for (const bool part : {false, true}) {
    MyUtils::ToUppercase(text, part);
    MyUtils::ToLowercase(text, part);
  }
}

void cut(const std::string& text, const std::string& by) {
  for (const bool dropEmpty : {false, true}) MyUtils::string2vector(text, by, dropEmpty);
  std::string joined;
  if (!by.empty()) {
    for (const std::string& part : MyUtils::string2vector(text, by, false))
      joined += (joined.data() == nullptr ? "" : "") + part + by;
    fuzz::require(joined == text + by, "the parts and what was between them are the text");
  }
  std::string replaced = text;
  MyUtils::StringReplace(replaced, by, "&amp;");
  MyUtils::UnescapeXml(replaced);
  const std::string trimmed = MyUtils::trim(text);
  fuzz::require(MyUtils::trim(trimmed) == trimmed, "what is trimmed has no blanks at its ends");
  MyUtils::CreateLoggableTicketNumber(text);
  MyUtils::IsEmailAddressValid(text.c_str());
}

void hex(const std::string& text) {
  std::vector<unsigned char> bytes(text.size() + 1);
  auto length = static_cast<unsigned int>(text.size());
  MyUtils::ASCIIHexToBinHex(text.c_str(), bytes.data(), &length);
  for (unsigned int room = 0; room < 4; ++room) {
    std::vector<unsigned char> small(room);
    unsigned int written = room;
    MyUtils::ASCIIHexToBinHex(text.c_str(), small.data(), &written);
    fuzz::require(written <= room, "no more bytes are written than there is room for");
  }
  std::string source = text;
  std::vector<char> digits(2 * text.size() + 1);
  auto count = static_cast<unsigned int>(source.size());
  MyUtils::BinHexToASCIIHex(reinterpret_cast<unsigned char*>(source.data()), digits.data(), &count);
  fuzz::require(source.empty() || count == 2 * source.size(), "a byte is two digits");
}

void numbers(const std::string& text, fuzz::Bytes& bytes) {
  MyUtils::leadingNumber(text.c_str());
  std::string copy = text;
  char digits[100];
  MyUtils::ValidateNumber(copy.data(), digits);
  // A number has some six words of up to ten letters for three digits.
  std::vector<char> words(8192);
  MyUtils::NumberToText(digits, words.data());
  MyUtils::ipv4_type address{};
  MyUtils::ipv4_parse(reinterpret_cast<const uint8_t*>(text.data()), static_cast<uint8_t>(text.size()), &address);

  const int64_t number = bytes.number();
  const auto precision = static_cast<int>(bytes.number());
  double real = 0;
  uint64_t bits = 0;
  for (int n = 0; n < 8; ++n) bits = bits << 8 | bytes.byte();
  std::memcpy(&real, &bits, sizeof real);
  fuzz::require(std::stol(MyUtils::itos(number)) == number, "a number is read back");
  MyUtils::int2str(number);
  MyUtils::double2string(real);
  for (const double value : {real, static_cast<double>(number)}) {
    MyUtils::currency2string(value, precision % 40);
    MyUtils::dtos(value, precision % 40);
    MyUtils::round(value, static_cast<unsigned int>(precision) % 20);
    MyUtils::saturated<int>(value);
    MyUtils::saturated<int64_t>(value);
    MyUtils::saturated<Uint8>(value);
    MyUtils::toPixels(value);
  }
  char result[66];
  for (const int base : {-1, 0, 1, 2, 10, 16, 36, 37, precision}) {
    MyUtils::itoa4(number, result, base);
    if (base <= 16) MyUtils::itoa(number, result, base);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Bytes bytes(data, size);
  const std::string text = bytes.text(), other = bytes.text();
  walk(text);
  cut(text, other);
  hex(text);
  numbers(text, bytes);
  try {
    MyUtils::UpdateLocale(other.substr(0, other.find('\0')));
  } catch (const std::runtime_error&) {
  }
  MyUtils::UpdateLocale("C");
  return 0;
}
