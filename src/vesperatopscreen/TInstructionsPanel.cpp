#include "vesperatopscreen/TInstructionsPanel.h"

#include <vector>

#include "common/ThreadSafeProperty.h"
#include "components/TGlyphLabel.h"
#include "components/TImageList.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/TApplication.h"
#include "vesperatopscreen/PlatformPicture.h"

using namespace vendelo_sdl2;

namespace {

struct TButtonRow {
  int x, y;
  const char* text;
  const char* caption;
};

// Button 2 stands higher, and rows 7 and 8 start with the text of row 1: all as it is wanted.
constexpr TButtonRow kRows[] = {{88, 856, "Instruction1", "Auto Spin"},    {300, 737, "Instruction2", "Payout"},
                                {512, 856, "Instruction3", "Game Select"}, {730, 856, "Instruction4", "Service"},
                                {952, 856, "Instruction5", "Bet- Red"},    {1172, 856, "Instruction6", "Info"},
                                {1388, 856, "Instruction1", "Bet+ Black"}, {1670, 856, "Instruction1", "Spin"}};

constexpr int kImageEnabled = 0, kImageDisabled = 1;

std::string numbered(const char* name, size_t n) { return name + MyUtils::itos(static_cast<long>(n)); }

}  // namespace

TInstructionsPanel::TInstructionsPanel(SDL_Renderer* pRenderer, int x, int y, int width, int height,
                                       std::string ComponentName)
  : TGuiComponent(pRenderer, x, y, width, height, ComponentName), mIntegrityLabel(nullptr) {
  mIntegrityLabel = new TGlyphLabel(pRenderer, 0, 100, width, 150, "",
                                    MyUtils::ImageDir() + "Fonts/jackpot_win_label", "integrityLabel");
  mIntegrityLabel->SetAlignment(CENTER_CENTER);
  mIntegrityLabel->_setVisible(false);
  mIntegrityLabel->SetResizeOnlyDown(true);
  AddComponent(mIntegrityLabel);
}

TInstructionsPanel::~TInstructionsPanel() = default;

int TInstructionsPanel::load() {
  pApp->WriteLog(1, 0, "Loading instructions panel.");
  const std::string workingDirPath = MyUtils::ImageDir();
  mButtonEnabled.reset(MyUtils::LoadTexture(GetRenderer(), workingDirPath + "buttonE.png"));
  mButtonDisabled.reset(MyUtils::LoadTexture(GetRenderer(), workingDirPath + "buttonD.png"));
  size_t n = 0;
  for (const TButtonRow& row : kRows) {
    ++n;
    auto* image = new TImageList(GetRenderer(), row.x, row.y, 177, 179, numbered("InstructionImage", n));
    image->pushImage(mButtonEnabled.get());
    image->pushImage(mButtonDisabled.get());
    image->DisplayImage(kImageEnabled, 0);
    AddComponent(image);
    auto* button =
      new TGlyphLabel(GetRenderer(), row.x + 32, row.y + 31, 101, 80, row.text,
                      workingDirPath + "/Fonts/HelveticaBold26px_Instructions", numbered("InstructionButton", n));
    auto* caption =
      new TGlyphLabel(GetRenderer(), row.x + 32, row.y + 117, 101, 20, row.caption,
                      workingDirPath + "/Fonts/HelveticaBold20px_SmallLabel", numbered("InstructionSmallLabel", n));
    for (TGlyphLabel* label : {button, caption}) {
      label->SetAlignment(CENTER_CENTER);
      label->SetResizeOnlyDown(true);
      AddComponent(label);
    }
  }
  return 0;
}

void TInstructionsPanel::draw() { TGuiComponent::draw(); }

int TInstructionsPanel::UpdateData() {
  std::vector<std::string> texts;
  {
    auto& state = platformState();
    ScopedLock lock(state);
    texts = state->Instructions;
  }
  for (size_t i = 0; i < texts.size(); ++i) {
    const size_t n = i + 1;
    if (auto* button = static_cast<TGlyphLabel*>(FindComponentByName(numbered("InstructionButton", n))))
      button->SetText(texts[i]);
    if (auto* image = static_cast<TImageList*>(FindComponentByName(numbered("InstructionImage", n))))
      image->DisplayImage(texts[i].empty() ? kImageDisabled : kImageEnabled, 0);
  }
  return 0;
}

void TInstructionsPanel::SetIntegrityCheckData(const std::string& data) {
  mIntegrityLabel->SetText(data);
  mIntegrityLabel->_setVisible(!data.empty());
}
