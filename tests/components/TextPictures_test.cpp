// Pictures of what shows text and digits, and of the ticker that carries them.
#include <vector>

#include "components/TControlCyphers3.h"
#include "components/TScrollingComponent.h"
#include "tests/components/PictureFixture.h"
#include "tests/components/SegmentFont.h"

using namespace vendelo_sdl2;

namespace {

const struct {
  TAlignment alignment;
  const char* text;
} places[] = {{LEFT_UP, "lu"},     {CENTER_UP, "cu"},     {RIGHT_UP, "ru"},
              {LEFT_CENTER, "lc"}, {CENTER_CENTER, "cc"}, {RIGHT_CENTER, "rc"},
              {LEFT_DOWN, "ld"},   {CENTER_DOWN, "cd"},   {RIGHT_DOWN, "rd"}};

class TextPictures : public WidgetPictures {};

}  // namespace

TEST_F(TextPictures, Labels) {
  expect({{"label_nine_places",
           [&] {
             Panel panel(0, 0);
             for (const auto& place : places)
               addLabel(panel, 50, 30, 300, 140, place.text)->SetAlignment(place.alignment);
             panel.draw();
             outline(50, 30, 300, 140);
           }},
          {"label_blend_modes",
           [&] {
             Panel panel(0, 0);
             for (int mode = 0; mode < 4; ++mode) {
               Tlabel* label = addLabel(panel, 150, 10 + 45 * mode, 100, 40, "Blended");
               label->updateCachedTextures();
               label->setBlendMode(mode);
             }
             panel.draw();
           }},
          {"label_alpha_through_parents",
           [&] {
             Panel panel(0, 0);
             auto* inner = new Panel(0, 0);
             panel.AddComponent(inner);
             addLabel(panel, 10, 10, 180, 30, "half")->SetShadow(true, 3, {200, 0, 0, 255});
             addLabel(*inner, 10, 60, 180, 30, "quarter")->SetShadow(true, 3, {200, 0, 0, 255});
             addLabel(*inner, 200, 60, 180, 30, "eighth")->setAlpha(128);
             panel.setAlpha(128);
             inner->setAlpha(128);
             panel.draw();
           }},
          {"label_angles",
           [&] {
             Panel panel(0, 0);
             int x = 10;
             for (const double angle : {0.0, 45.0, 90.0, 180.0, -45.0}) {
               Tlabel* label = addLabel(panel, x, 70, 70, 40, "Turn");
               label->SetShadow(true, 4, {0, 0, 0, 255});
               label->setAngle(angle);
               x += 75;
             }
             panel.draw();
           }},
          {"label_shadow_to_the_left",
           [&] {
             Panel panel(0, 0);
             addLabel(panel, 20, 20, 300, 60, "left")->SetShadow(true, -6, {220, 0, 0, 255});
             addLabel(panel, 20, 100, 300, 60, "right")->SetShadow(true, 6, {220, 0, 0, 255});
             panel.draw();
           }},
          {"label_split_with_spaces", [&] {
             Panel panel(0, 0);
             Tlabel* label = addLabel(panel, 20, 20, 360, 160, "one  two three");
             label->SetShadow(true, 6, {220, 0, 0, 255});
             label->SplitText(true);
             label->SetAlignment(CENTER_CENTER);
             panel.draw();
             outline(20, 20, 360, 160);
           }}});
}

TEST_F(TextPictures, LabelsSliding) {
  Panel panel(0, 0);
  const struct {
    Tlabel::TAnimationDirection direction;
    int x, y;
    const char* text;
  } rows[] = {{Tlabel::LEFT, 250, 20, "LEFT"},
              {Tlabel::RIGHT, 20, 60, "RIGHT"},
              {Tlabel::UP, 100, 100, "UP"},
              {Tlabel::DOWN, 180, 100, "DOWN"}};
  for (const auto& row : rows) {
    Tlabel* label = addLabel(panel, row.x, row.y, 120, 30, row.text);
    label->SetAnimation(row.direction);
    label->updateCachedTextures();
    label->_setVisible(false);
    label->ShowFor(500);
  }
  // 2 pixels a step: the longest way in is 150 pixels, then 500 ms of rest.
  expect({{"label_slide_0", [&] { panel.draw(); }},
          {"label_slide_in_20",
           [&] {
             slide(20);
             panel.draw();
           }},
          {"label_slide_in_70",
           [&] {
             slide(50);
             panel.draw();
           }},
          {"label_slide_out_95", [&] {
             slide(25);
             panel.draw();
           }}});
}

TEST_F(TextPictures, Digits) {
  TBitmapFont* const segments = segmentFont(renderer, "");
  auto make = [&](int x, int y, int h) {
    auto digits = std::make_unique<TControlCyphers3>(nullptr, x, y, 390, h, 10, "digits" + std::to_string(y));
    digits->SetDecimalPlaces(2);
    digits->SetFont(segments);
    return digits;
  };
  auto stand = [&](TControlCyphers3& digits, long value) {
    digits.SetFinalValue(value);
    digits.ResetAnimation();
    digits.draw();
  };
  expect({{"cyphers_both_locales",
           [&] {
             for (const auto locale :
                  {TControlCyphers3::COMMA_DECIMAL_DOT_THOUSANDS, TControlCyphers3::COMMA_THOUSANDS_DOT_DECIMAL}) {
               auto digits = make(5, 20 + 80 * locale, 50);
               digits->SetLocale(locale);
               stand(*digits, 123456789);
             }
           }},
          {"cyphers_heights",
           [&] {
             int y = 5;
             for (const int height : {15, 30, 50, 75}) {
               auto digits = make(5, y, height);
               digits->SetCypherGap(3);
               digits->SetCypherWidth(height * 3 / 5 + 2);
               stand(*digits, 123456);
               y += height + 6;
             }
           }},
          {"cyphers_leading_digit_at_ticks",
           [&] {
             std::vector<std::unique_ptr<TControlCyphers3>> rows;
             for (int i = 0; i < 4; ++i) {
               rows.push_back(make(5, 50 * i, 50));
               rows.back()->SetDecimalPlaces(0);
               rows.back()->SetSpinFunction([](double, double) { return 1.0; });
               rows.back()->SetFinalValue(999);
             }
             clock.set(20000);
             for (int i = 0; i < 4; ++i) {
               // Row i shows the wheels 50 * i ms after the change; what it draws before goes under the next.
               clock.set(20000);
               rows[static_cast<size_t>(i)]->draw();
               rows[static_cast<size_t>(i)]->SetFinalValue(1000);
               clock.set(20300);
               rows[static_cast<size_t>(i)]->draw();
               const SDL_Rect band{0, 50 * i, 400, 50};
               SDL_SetRenderDrawColor(renderer, 40, 60, 90, 255);
               SDL_RenderFillRect(renderer, &band);
               clock.set(20300 + 30 + 50 * static_cast<Uint32>(i));
               rows[static_cast<size_t>(i)]->draw();
             }
           }},
          {"cyphers_alpha_through_parents", [&] {
             Panel panel(0, 0);
             auto* inner = new Panel(0, 0);
             panel.AddComponent(inner);
             auto half = make(5, 20, 50), quarter = make(5, 110, 50);
             for (auto* digits : {half.get(), quarter.get()}) {
               digits->SetFinalValue(1234567);
               digits->ResetAnimation();
             }
             panel.AddComponent(half.release());
             inner->AddComponent(quarter.release());
             panel.setAlpha(128);
             inner->setAlpha(128);
             panel.draw();
           }}});
}

TEST_F(TextPictures, Tickers) {
  auto make = [&](const char* name) {
    auto ticker = std::make_unique<TScrollingComponent>(nullptr, 20, 5, 360, 28, name);
    const SDL_Point sizes[] = {{60, 20}, {120, 16}, {40, 24}};
    for (int i = 0; i < 3; ++i) {
      auto* child = new TGuiComponent(nullptr, 0, 0, sizes[i].x, sizes[i].y, "child" + std::to_string(i));
      child->SetTargetTexture(picture(sizes[i].x, sizes[i].y));
      ticker->AddContent(child, -1, static_cast<TScrollingComponent::ContentAlign>(i));
    }
    ticker->SetSpacingFixed(40);
    ticker->SetScrollSpeedFixed(-200);
    ticker->SetWaitDuration(0.5f);
    return ticker;
  };
  auto atTicks = [&](TScrollingComponent& ticker, std::initializer_list<Uint32> ticks) {
    int y = 5;
    for (const Uint32 tick : ticks) {
      clock.set(40000 + tick);
      ticker.setY(y);
      ticker.draw();
      outline(19, y - 1, 362, 30);
      y += 32;
    }
  };
  expect({{"ticker_at_ticks",
           [&] {
             auto ticker = make("left");
             atTicks(*ticker, {0, 500, 700, 1100, 1600, 2500});
           }},
          {"ticker_to_the_right",
           [&] {
             auto ticker = make("right");
             ticker->SetScrollSpeedFixed(200);
             atTicks(*ticker, {0, 500, 700, 1100, 1600, 2500});
           }},
          {"ticker_spacing_and_padding",
           [&] {
             auto ticker = make("relative");
             ticker->SetSpacingRelative(25);
             ticker->SetPadding(30);
             ticker->SetMovementFunction([](float t, float) { return t * t; });
             atTicks(*ticker, {0, 600, 800, 1000, 1200, 1400});
           }},
          {"ticker_alpha_through_parents", [&] {
             Panel panel(0, 0);
             auto* inner = new Panel(0, 80);
             panel.AddComponent(inner);
             panel.AddComponent(make("half").release());
             inner->AddComponent(make("quarter").release());
             panel.setAlpha(128);
             inner->setAlpha(128);
             clock.set(60000);
             panel.draw();
           }}});
}
