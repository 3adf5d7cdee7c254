// What a game brings to the screen, spoilt in one way after the other.
#include "tools/skincheck/GameCheck.h"

#include "SpoiltSkin.h"

using namespace spoiltskin;

TEST(GameCheck, WhatAGameBringsIsTold) {
  runGameCases(
    {{"no overlay",
      removed(kIcons + "overlay.xml"),
      {"W unused " + kIcons + "overlay.png: nothing asks",
       "W missing " + kIcons + "overlay.xml: is missing (beside"}},
     {"no whole picture", removed(kIcons + "topscreen.jpg"), {"W missing " + kIcons + "topscreen.jpg: is missing"}},
     {"whole picture of another extension",
      [](const std::string& root) {
        fs::remove(root + kIcons + "topscreen.jpg");
        paint(root + kIcons + "topscreen.png", 96, 54);
      },
      {"W fallback " + kIcons + "topscreen.jpg: the program takes \"topscreen.png\""}},
     {"no ground", removed(kIcons + "background.png"), {"W missing " + kIcons + "background.png: is missing"}},
     {"ground as JPEG",
      [](const std::string& root) {
        fs::remove(root + kIcons + "background.png");
        paint(root + kIcons + "background.jpg", 96, 54);
      },
      {}},
     {"ground twice",
      painted(kIcons + "background.jpg", 96, 54),
      {"W unused " + kIcons + "background.jpg: the program takes \"background.png\""}},
     {"ground that cannot be read, with one that could",
      [](const std::string& root) {
        writeText(root + kIcons + "background.png", "");
        paint(root + kIcons + "background.jpg", 96, 54);
      },
      {"W unused " + kIcons + "background.jpg: the program takes \"background.png\"",
       "E unreadable " + kIcons + "background.png: cannot be read"}},
     {"overlay too short",
      [](const std::string& root) { smallskin::writeAnimation(root + kIcons + "overlay", 810, 900, 30); },
      {"W atlas-loop " + kIcons + "overlay.xml: 30 frames"}},
     {"other files", written(kIcons + "menu.png"), {"W unused " + kIcons + "menu.png: nothing asks"}},
     {"beside the icons", written("Games/Reels/game.txt"), {}}});
}

TEST(GameCheck, PagesAreFoundAsThePanelFindsThem) {
  const std::string all = kIcons + "paytable/", german = kIcons + "paytable_de/";
  runGameCases({{"no folder for all languages",
                 [=](const std::string& root) { fs::remove_all(root + all); },
                 {"W pages " + kIcons + "paytable: languages without a folder of their own have no pages"}},
                {"no folder of a language", [=](const std::string& root) { fs::remove_all(root + german); }, {}},
                {"an empty folder",
                 [=](const std::string& root) {
                   fs::remove_all(root + german);
                   fs::create_directory(root + german);
                 },
                 {"E pages " + german + ": there is no page"}},
                {"other pages in a language",
                 [=](const std::string& root) {
                   fs::rename(root + german + "InfoPage_Rules.jpg", root + german + "InfoPage_Features.jpg");
                 },
                 {"W pages " + german + ": without InfoPage_Rules, with InfoPage_Features"}},
                {"a page twice",
                 painted(all + "InfoPage_Paytable.jpg", 20, 10),
                 {"W unused " + all + "InfoPage_Paytable.jpg: the program takes \"InfoPage_Paytable.png\""}},
                {"an extension that pages do not have",
                 written(all + "InfoPage_Features.jpeg"),
                 {"W unused " + all + "InfoPage_Features.jpeg: nothing asks"}},
                {"other capitals",
                 painted(all + "InfoPage_features.png", 20, 10),
                 {"W unused " + all + "InfoPage_features.png: but for \"InfoPage_Features.png\""}},
                {"larger than the screen",
                 painted(all + "InfoPage_Paytable.png", 1921, 10),
                 {"W size " + all + "InfoPage_Paytable.png: there is room for 1920 x 1080"}},
                {"too long for any texture",
                 painted(all + "InfoPage_Paytable.png", 32768, 1),
                 {"E unreadable " + all + "InfoPage_Paytable.png: cannot be read"}},
                {"half a page",
                 [=](const std::string& root) { cutShort(root + german + "InfoPage_Paytable.png"); },
                 {"E unreadable " + german + "InfoPage_Paytable.png: cannot be read"}}});
}

TEST(GameCheck, PrizeFontsComeInPairs) {
  runGameCases(
    {{"no outlines",
      removed(kIcons + "prize.ttf"),
      {"W prize-font " + kIcons + "prize.fnt: the bets in the corners would show nothing"}},
     {"no bitmaps",
      [](const std::string& root) {
        fs::remove(root + kIcons + "prize.fnt");
        fs::remove(root + kIcons + "prize.png");
      },
      {"W prize-font " + kIcons + "prize.ttf: there is no \"prize.fnt\""}},
     {"OpenType", renamed(kIcons + "prize.ttf", kIcons + "prize.otf"), {}},
     {"both kinds", blind(kIcons + "prize.otf"), {"W unused " + kIcons + "prize.otf: the program takes"}},
     {"no font", written(kIcons + "prize.ttf"), {"E unreadable " + kIcons + "prize.ttf: cannot be read"}},
     {"no digits",
      blind(kIcons + "prize.ttf"),
      {"E font-character " + kIcons + "prize.ttf: characters are missing"}},
     {"a broken description",
      written(kIcons + "prize.fnt", "<font"),
      {"E xml " + kIcons + "prize.fnt: ", "W unused " + kIcons + "prize.png: nothing asks"}}});
}
