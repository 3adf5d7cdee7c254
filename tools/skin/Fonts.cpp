// The bitmap fonts of the labels and of the digits, and the one TrueType font that the program opens by itself.
#include "Family.h"
#include "FontPack.h"

namespace {
const Colour kInk = {0.035, 0.022, 0.010};

// Digits of the pots and the currency beside them. A cell is as wide as a wheel and as high as the digits' box (48
// by 91), so that the program draws the wheels at their own size; the baseline lies where the smaller digits
// behind the decimal point, at 0.7 of the size, end on the same line.
void drawCurrencyFont(const Output& output) {
  constexpr int line = 91, base = 78;
  const FontStyle style = {
    {{0.0, {1.00, 1.00, 0.97}}, {0.42, {1.00, 0.95, 0.78}}, {0.56, {0.99, 0.85, 0.50}}, {1.0, {0.98, 0.74, 0.27}}},
    kInk,
    2.2,
    3,
    0};
  const Typeface digits(fontfile::kCondensedBold, 92);
  const Typeface letters(fontfile::kCondensedBold, 62);
  FontPack font(style, line, base);
  font.addFixed(digits, U"0123456789", 58, 49);
  const Typeface marks(fontfile::kCondensedBold, 72);
  font.addHanging(marks, U'.');
  font.addHanging(marks, U',');
  // Signs stand beside the digits at nearly their size, letters are smaller: three of them fit their field.
  const Typeface signs(fontfile::kCondensedBold, 80);
  font.add(
    signs,
    U"$\u00a2\u00a3\u00a5\u20ac\u20a4\u20a6\u20a9\u20aa\u20ab\u20b1\u20b4\u20b8\u20b9\u20ba\u20bd\u20be\u20bf");
  font.add(letters, westernCharacters());
  font.add(letters, easternCharacters());
  font.save(output.skinPath("Fonts/currency"), "currency", 1024);
}

void drawHintFont(const Output& output) {
  const FontStyle style = {{{0.0, {1.0, 0.98, 0.92}}, {1.0, {0.98, 0.88, 0.64}}}, kInk, 1.1, 1, 0.6};
  const Typeface face(fontfile::kBold, 19.5);
  FontPack font(style, 25, 19);
  font.add(face, latinCharacters());
  font.add(face, easternCharacters());
  font.save(output.skinPath("Fonts/uni_font"), "uni_font", 512);
}

void drawWarningFont(const Output& output) {
  const FontStyle style = {
    {{0.0, {1.0, 0.97, 0.84}}, {0.5, {1.0, 0.84, 0.44}}, {1.0, {0.96, 0.66, 0.20}}}, kInk, 2.4, 3, 1};
  const Typeface face(fontfile::kCondensedBold, 51);
  FontPack font(style, 69, 51);
  font.add(face, latinCharacters());
  font.add(face, easternCharacters());
  font.save(output.skinPath("Fonts/jackpot_win_label"), "jackpot_win_label", 1024);
}

void drawInfoFont(const Output& output) {
  const FontStyle style = {{{0.0, {1.0, 1.0, 0.98}}, {1.0, {0.99, 0.90, 0.70}}}, kInk, 1.5, 2, 0.5};
  const Typeface face(fontfile::kCondensedBold, 42);
  FontPack font(style, 56, 43);
  font.add(face, latinCharacters());
  font.add(face, easternCharacters());
  font.save(output.skinPath("Fonts/info_bar_font"), "info_bar_font", 1024);
}

// The hours stand in a field of 430 by 62 in the head of the frame, whose middle lies lower than the field's. A
// line higher than the field starts at its top, so the baseline is set to where the level's name has it.
void drawHoursFont(const Output& output) {
  const FontStyle style = {{{0.0, {0.94, 1.0, 0.97}}, {0.5, {0.62, 0.98, 0.80}}, {1.0, {0.24, 0.86, 0.58}}},
                           {0.0, 0.05, 0.03},
                           1.8,
                           2,
                           0.5};
  const Typeface face(fontfile::kCondensedBold, 38);
  FontPack font(style, 76, 62);
  font.add(face, westernCharacters());
  font.save(output.skinPath("Fonts/emerald_hours_font"), "emerald_hours_font", 1024);
}

// The texts of the cabinet's buttons and the buttons' names below them; both are made smaller where they are too
// long for their 101 pixels.
void drawButtonFonts(const Output& output) {
  const Typeface large(fontfile::kSansBold, 26);
  FontPack texts({{{0.0, {1.0, 1.0, 0.98}}, {1.0, {1.0, 0.90, 0.66}}}, {0.10, 0.01, 0.02}, 1.4, 1, 0}, 31, 24);
  texts.add(large, latinCharacters());
  texts.add(large, easternCharacters());
  texts.save(output.skinPath("Fonts/HelveticaBold26px_Instructions"), "HelveticaBold26px_Instructions", 512);
  const Typeface small(fontfile::kSansBold, 20);
  FontPack captions({{{0.0, {1.0, 0.93, 0.74}}, {1.0, {0.94, 0.76, 0.40}}}, {0.03, 0.02, 0.02}, 1, 1, 0}, 24, 18);
  captions.add(small, latinCharacters());
  captions.add(small, easternCharacters());
  captions.save(output.skinPath("Fonts/HelveticaBold20px_SmallLabel"), "HelveticaBold20px_SmallLabel", 512);
}
}  // namespace

void drawFonts(const Output& output) {
  drawButtonFonts(output);
  drawCurrencyFont(output);
  drawHintFont(output);
  drawWarningFont(output);
  drawInfoFont(output);
  drawHoursFont(output);
  output.copy(fontfile::kBold, "AppFontBold.ttf");
}
