// A small skin in which there is nothing to find, spoilt in one way after the other.
#include "tools/skincheck/SkinCheck.h"

#include <tuple>

#include "SpoiltSkin.h"
#include "tools/skincheck/FolderFiles.h"
#include "tools/skincheck/PictureCheck.h"

using namespace spoiltskin;

TEST(SkinCheck, NothingIsFoundInAGoodSkin) { expectFindings(check(original(), true), original(), {}); }

TEST(SkinCheck, FilesAreFoundAsAskedOrTold) {
  runTogether(
    {{"a picture", removed(kLogo), {"E missing " + kLogo + ": is missing (in the middle of the screen"}},
     {"other capitals",
      renamed(kSkin + "bar.png", kSkin + "Bar.PNG"),
      {"W unused " + kSkin + "Bar.PNG: but for \"bar.png\"",
       "E missing " + kSkin + "bar.png: (\"Bar.PNG\" has other capitals)"}},
     {"another extension",
      [](const std::string& root) {
        fs::remove(root + kSkin + "JACKPOT.png");
        paint(root + kSkin + "JACKPOT.jpg", 630, 156);
      },
      {"W fallback " + kSkin + "JACKPOT.png: is missing, the program takes \"JACKPOT.jpg\""}},
     {"another extension, and another size",
      [](const std::string& root) {
        fs::remove(root + kSkin + "GOLD_LEFT.png");
        paint(root + kSkin + "GOLD_LEFT.jpg", 300, 208);
      },
      {"E size " + kSkin + "GOLD_LEFT.jpg: is 300 x 208",
       "W fallback " + kSkin + "GOLD_LEFT.png: the program takes \"GOLD_LEFT.jpg\""}},
     {"half a picture",
      [](const std::string& root) { cutShort(root + kSkin + "Background.png"); },
      {"E unreadable " + kSkin + "Background.png: cannot be read"}},
     {"a picture that is too long for any texture",
      painted(kSkin + "splashLogo.png", 32768, 1),
      {"E unreadable " + kSkin + "splashLogo.png: cannot be read"}},
     {"no picture, and one of another extension",
      [](const std::string& root) {
        writeText(root + kSkin + "GOLD_RIGHT.png", "no picture");
        paint(root + kSkin + "GOLD_RIGHT.jpg", 908, 208);
      },
      {"W fallback " + kSkin + "GOLD_RIGHT.png: cannot be read, the program takes \"GOLD_RIGHT.jpg\""}},
     {"a folder in the place of a picture",
      [](const std::string& root) {
        fs::remove(root + kSkin + "buttonE.png");
        fs::create_directory(root + kSkin + "buttonE.png");
      },
      {"E missing " + kSkin + "buttonE.png: is missing"}},
     {"a link to nowhere",
      [](const std::string& root) {
        fs::remove(root + kSkin + "buttonD.png");
        fs::create_symlink("nowhere.png", root + kSkin + "buttonD.png");
      },
      {"E missing " + kSkin + "buttonD.png: is missing"}},
     {"a font",
      removed(kSkin + "Fonts/uni_font.fnt"),
      {"E missing " + kSkin + "Fonts/uni_font.fnt: is missing (the hint",
       "W unused " + kSkin + "Fonts/uni_font.png: nothing asks for the file"}},
     {"a font with other capitals",
      renamed(kSkin + "Fonts/currency.fnt", kSkin + "Fonts/Currency.fnt"),
      {"W unused " + kSkin + "Fonts/Currency.fnt: but for \"currency.fnt\"",
       "E missing " + kSkin + "Fonts/currency.fnt: (\"Fonts/Currency.fnt\" has other capitals)",
       "W unused " + kSkin + "Fonts/currency.png: nothing asks"}},
     {"an animation",
      removed(kSkin + "Animation/IdleLeft.xml"),
      {"W unused " + kSkin + "Animation/IdleLeft.png: nothing asks",
       "E missing " + kSkin + "Animation/IdleLeft.xml: is missing (sparkle"}},
     {"outlines of the waiting screen",
      removed(kSkin + "AppFont.ttf"),
      {"E missing " + kSkin + "AppFont.ttf: is missing (the status line"}},
     {"outlines of the frame rate", removed("AppFontBold.ttf"), {"E missing AppFontBold.ttf: is missing"}}});
}

TEST(SkinCheck, APictureOfAnotherFormatThanItsEndingSaysIsTold) {
  const std::string icons = kIcons, page = icons + "paytable_de/InfoPage_Rules.jpg";
  runTogether(
    {{"JPEG renamed",
      renamedAfter(".jpg", kSkin + "buttonE.png", 177, 179),
      {"W format " + kSkin + "buttonE.png: the file is a JPEG, its ending says PNG: the transparency is lost"}},
     {"the atlas of an animation",
      renamedAfter(".jpg", kSkin + "Animation/IdleLeft.png", 8, 8),
      {"W format " + kSkin + "Animation/IdleLeft.png: the file is a JPEG"}},
     {"a bitmap as the atlas of a font",
      [](const std::string& root) {
        SDL_Surface* picture = SDL_CreateRGBSurfaceWithFormat(0, 16, 20, 32, SDL_PIXELFORMAT_RGBA32);
        SDL_SaveBMP(picture, (root + kSkin + "Fonts/uni_font.png").c_str());
        SDL_FreeSurface(picture);
      },
      {"W format " + kSkin + "Fonts/uni_font.png: the file is a BMP, its ending says PNG"}},
     {"found by the list of extensions",
      [](const std::string& root) {
        renamedAfter(".png", kSkin + "logo.jpeg", 596, 76)(root);
        fs::remove(root + kLogo);
      },
      {"W fallback " + kLogo + ": the program takes \"logo.jpeg\"",
       "W format " + kSkin + "logo.jpeg: the file is a PNG, its ending says JPEG"}},
     {"a page", renamedAfter(".png", page, 200, 100), {"W format " + page + ": a PNG, its ending says JPEG"}},
     {"without levels",
      renamedAfter(".png", icons + "topscreen.jpg", 96, 54),
      {"W format " + icons + "topscreen.jpg: a PNG, its ending says JPEG"}}},
    true);
}

TEST(SkinCheck, LinksAreFollowed) {
  runTogether({{"a file and a folder",
                [](const std::string& root) {
                  fs::rename(root + kLogo, root + kSkin + "the sign \xc3\xa4.png");
                  fs::create_symlink("the sign \xc3\xa4.png", root + kLogo);
                  fs::rename(root + kSkin + "Fonts", root + "Letters");
                  fs::create_directory_symlink("../../Letters", root + kSkin + "Fonts");
                },
                {}},
               {"a second name of a picture",
                [](const std::string& root) { fs::create_symlink("bar.png", root + kSkin + "sign.png"); },
                {"W unused " + kSkin + "sign.png: nothing asks"}},
               {"a ring of folders",
                [](const std::string& root) { fs::create_directory_symlink(".", root + kSkin + "again"); },
                {}}});
}

TEST(SkinCheck, PicturesHaveTheSizeOfTheirPlace) {
  runTogether(
    {{"exact", painted(kLogo, 597, 76), {"E size " + kLogo + ": is 597 x 76, the place needs 596 x 76"}},
     {"the ground",
      painted(kSkin + "Background.png", 960, 540),
      {"E size " + kSkin + "Background.png: is 960 x 540"}},
     {"larger than a stretched one's place",
      painted(kSkin + "Animation/Backround.png", 1922, 1080),
      {"E size " + kSkin + "Animation/Backround.png: larger than its place of 1920 x 1080"}},
     {"no room",
      painted(kSkin + "splashLogo.png", 100, 361),
      {"W size " + kSkin + "splashLogo.png: there is room for 1920 x 360"}},
     {"no square", painted(kSkin + "dot.png", 40, 41), {"E size " + kSkin + "dot.png: is drawn as a square"}},
     {"transparent, which all but the ground may be", painted(kSkin + "ClientDemo.png", 1920, 1080, 10), {}}});
  runTogether({{"out of shape",
                painted(kSkin + "Animation/Backround.png", 100, 100),
                {"W size " + kSkin + "Animation/Backround.png: out of shape"}},
               {"transparent ground",
                painted(kSkin + "Background.png", 1920, 1080, 254),
                {"E opaque " + kSkin + "Background.png: transparent pixels"}}});
}

TEST(SkinCheck, FontsAndAnimationsAreReadToo) {
  runTogether(
    {{"font",
      written(kSkin + "Fonts/uni_font.fnt", "<font>\n<char"),
      {"E xml " + kSkin + "Fonts/uni_font.fnt: no XML", "W unused " + kSkin + "Fonts/uni_font.png: nothing asks"}},
     {"the room of a font",
      [](const std::string& root) {
        smallskin::writeFont(root + kSkin + "Fonts/HelveticaBold20px_SmallLabel", 60, 20);
      },
      Lines(8, "W text-fit " + kSkin + "Fonts/HelveticaBold20px_SmallLabel.fnt: hard to read")},
     {"whole frame",
      [](const std::string& root) {
        smallskin::writeAnimation(root + kSkin + "Animation/IdleLeft", 1000, 381, 31);
      },
      {"E atlas-size " + kSkin + "Animation/IdleLeft.xml: 1000 x 381"}},
     {"outlines that are none",
      written("AppFontBold.ttf"),
      {"E unreadable AppFontBold.ttf: cannot be read as a font"}},
     {"outlines without letters",
      blind(kSkin + "AppFont.ttf"),
      {"E font-character " + kSkin + "AppFont.ttf: characters are missing, W (U+0057)"}}});
}

TEST(SkinCheck, FilesThatNothingAsksForAreTold) {
  runTogether({{"pictures, texts and anything",
                [](const std::string& root) {
                  paint(root + kSkin + "logo.jpg", 8, 8);
                  writeText(root + kSkin + "notes on gold.txt", "");
                  writeText(root + kSkin + "readme.png", "");
                  writeText(root + kSkin + "Fonts/\xff\n.bin", "");
                  fs::create_directories(root + kSkin + "old/older");
                  writeText(root + kSkin + "old/older/JACKPOT.png", "");
                },
                {"W unused " + kSkin + "Fonts/\xff\n.bin: nothing asks for the file",
                 "W unused " + kSkin + "logo.jpg: the program takes \"logo.png\"",
                 "W unused " + kSkin + "notes on gold.txt: nothing asks for the file",
                 "W unused " + kSkin + "readme.png: nothing asks for the file",
                 "W unused " + kSkin + "old/older/JACKPOT.png: nothing asks for the file"}},
               {"papers and hidden files",
                [](const std::string& root) {
                  for (const char* name : {"README", "readme.md", "LICENSE.txt", "Fonts/OFL.txt", "COPYING",
                                           "LICENSE-Roboto.txt", ".gitignore", "Thumbs.db", "desktop.ini"})
                    writeText(root + kSkin + name, "");
                  fs::create_directory(root + kSkin + ".git");
                  writeText(root + kSkin + ".git/logo.png", "");
                  writeText(root + "VESPERA/other.txt", "");  // another program's
                },
                {}}});
}

TEST(SkinCheck, EachGameIsAFolderWithIcons) {
  runTogether(
    {{"no icons",
      [](const std::string& root) { fs::create_directories(root + "Games/Wheels/icons"); },
      {"W game-folder Games/Wheels: (\"icons\" has other capitals)"}},
     {"two dots",
      [](const std::string& root) { fs::rename(root + "Games/Reels", root + "Games/Reels..2"); },
      {"E game-folder Games/Reels..2: two dots"}},
     {"a game that brings nothing else",
      [](const std::string& root) { fs::create_directories(root + "Games/Dice/Icons"); },
      {"W missing Games/Dice/Icons/overlay.xml: is missing", "W missing Games/Dice/Icons/topscreen.jpg: is missing",
       "W missing Games/Dice/Icons/background.png: is missing", "W pages Games/Dice/Icons/paytable: is missing"}}},
    true);
  runTogether({{"no games",
                [](const std::string& root) { fs::remove_all(root + "Games/Reels"); },
                {"E game-folder Games/: there is no game"}}},
              true);
}

TEST(SkinCheck, ALineThatIsTooLongForItsPlaceIsTold) {
  Findings findings;
  checkOutlines(smallskin::kOutlines, "Waiting", 100, findings);
  ASSERT_EQ(1U, findings.list.size());
  EXPECT_EQ("text-fit", findings.list[0].code);
  Findings quiet;
  checkOutlines(smallskin::kOutlines, "Waiting", 1000, quiet);
  EXPECT_TRUE(quiet.list.empty());
}

TEST(SkinCheck, AFolderThatCannotBeReadIsOneFinding) {
  Findings findings;
  EXPECT_TRUE(filesBelow("/nowhere at all/", findings).empty());
  ASSERT_EQ(1U, findings.list.size());
  EXPECT_EQ("folder", findings.list[0].code);
  EXPECT_NE(std::string::npos, findings.list[0].text.find("No such file or directory"));
}

TEST(SkinCheck, DecodedSizesAreCountedAgainstTheBudget) {
  CheckOptions options;
  options.folder = original();
  options.games = original() + "Games";
  const CheckReport report = checkSkin(options);
  ASSERT_EQ(2U, report.parts.size());
  const CheckedPart& skin = report.parts[0];
  EXPECT_EQ("skin", skin.name);
  EXPECT_EQ(60000000, skin.budget);
  int64_t sum = 0;
  for (const DecodedFile& file : skin.files) sum += file.bytes;
  EXPECT_EQ(sum, skin.bytes);
  EXPECT_EQ(1920 * 1080 * 4, skin.files[0].bytes);
  // Atlas 8 x 8 against the whole picture, then the ground, the font and two pages of one language.
  const CheckedPart& game = report.parts[1];
  EXPECT_EQ("Reels", game.name);
  EXPECT_EQ(40000000, game.budget);
  EXPECT_EQ(4 * (96 * 54 + 96 * 54 + 16 * 20 + 2 * 200 * 100), game.bytes);

  options.skinBudget = 16;
  options.fileBudget = 8;
  options.gameBudget = 1;
  const std::string folder = original() + kSkin;
  expectFindings(checkSkin(options), original(),
                 {"W budget " + kSkin + ": MB when decoded, above 16",
                  "W budget " + kSkin + "Background.png: takes 8.3 MB when decoded, above 8",
                  "W budget " + kSkin + "ClientDemo.png: takes 8.3 MB when decoded, above 8"});
  const ScratchFolder scratch("skincheck-budget");
  const std::string root = scratch + "";
  fs::copy(original(), root, fs::copy_options::recursive);
  paint(root + kIcons + "paytable_de/InfoPage_Paytable.png", 600, 500);
  options = {root, root + "Games", 60, 1, 32};
  expectFindings(checkSkin(options), root, {"W budget " + kIcons + ": MB when decoded, above 1"});
}

TEST(SkinCheck, FindingsAreSortedByFileAndPlace) {
  const ScratchFolder scratch("skincheck-sorted");
  const std::string root = scratch + "";
  fs::copy(original(), root, fs::copy_options::recursive);
  fs::remove(root + kLogo);
  fs::remove(root + "AppFontBold.ttf");
  smallskin::writeAnimation(root + kSkin + "Animation/IdleLeft", 1, 1, 31);
  const CheckReport report = check(root, true);
  EXPECT_GT(report.findings.size(), 5U);
  for (size_t i = 1; i < report.findings.size(); ++i) {
    const Finding &a = report.findings[i - 1], &b = report.findings[i];
    EXPECT_LE(std::tie(a.file, a.line, a.column), std::tie(b.file, b.line, b.column));
  }
}

TEST(SkinCheck, TheWrongFolderIsToldWithTheRightOne) {
  const ScratchFolder scratch("skincheck wrong \xc3\xa4");
  const std::string root = scratch + "";
  fs::create_directories(root + "a skin/VESPERA/TOP_SKIN/Fonts");
  fs::create_directories(root + "other/vespera/TOP_SKIN");
  fs::create_directories(root + "all/Games/Reels/Icons");
  const struct {
    std::string folder, games, text;
  } rows[] = {{root + "nothing", "", "there is no folder"},
              {root + "a skin/VESPERA", "",
               "the folder VESPERA of a skin: give the one that holds it, \"" + root + "a skin/\""},
              {root + "a skin/VESPERA/TOP_SKIN", "", "as WORKING_DIR names it, \"" + root + "a skin/\""},
              {root + "other", "", "but \"vespera/TOP_SKIN\", which has other capitals"},
              {root + "all", "", "there is no folder VESPERA/TOP_SKIN"},
              {original(), root + "nothing", "there is no folder"},
              {original(), root + "all/Games/Reels",
               "the folder of one game: give the one that holds the games, \"" + root + "all/Games/\""},
              {original(), original() + kIcons,
               "the folder Icons of a game: give the one that holds the games, \"" + original() + "Games/\""},
              {original(), root + "all", "give \"" + root + "all/Games\""}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.folder + " " + row.games);
    CheckOptions options;
    options.folder = row.folder;
    options.games = row.games;
    try {
      checkSkin(options);
      ADD_FAILURE() << "nothing is wrong with it";
    } catch (const WrongFolder& error) {
      const std::string text = error.what();
      EXPECT_NE(std::string::npos, text.find(row.text)) << text;
      EXPECT_EQ(std::string::npos, text.find('\n'));
    }
  }
}
