"""Whatever draws, draws by drawing::, or it would be missing where only what changes is drawn."""
import re
import subprocess
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
CALL = re.compile(r"\bSDL_(Render(?:Copy|CopyEx|CopyF|CopyExF|Clear|Geometry|(?:Draw|Fill)\w+|SetClipRect|SetScale)|"
                  r"(?:Set|Get)RenderTarget|LockTexture\w*|UpdateTexture)\(")
# Counted in one place.
MADE = re.compile(r"\b(SDL_(?:Create|Destroy)Texture\w*|IMG_LoadTexture\w*)\(")
# What carries the calls out, what brings the finished picture to the window, and what fills new textures.
ALLOWED = {
    "vendelo-sdl2/Drawing.cpp", "vendelo-sdl2/TFramePicture.cpp", "vendelo-sdl2/TDrawCommand.cpp",
    "vendelo-sdl2/WindowDrawing.cpp", "vendelo-sdl2/TTexturePixels.cpp", "vendelo-sdl2/TAppGuiModule.cpp",
    "vendelo-sdl2/TAppGuiModuleFrame.cpp", "vendelo-sdl2/PictureFormat.cpp",
}
MAKER = "vendelo-sdl2/Drawing.cpp"


class Drawing(unittest.TestCase):
    def test_only_by_way_of_the_recorder(self):
        listed = subprocess.run(["git", "ls-files", "--cached", "--others", "--exclude-standard", "vendelo-sdl2", "src",
                                 "include"], cwd=ROOT, capture_output=True, text=True, check=True).stdout.split()
        told = []
        for name in listed:
            if not (ROOT / name).exists():
                continue
            for number, line in enumerate((ROOT / name).read_text().splitlines(), 1):
                code = line.split("//")[0]
                if (name not in ALLOWED and CALL.search(code)) or (name != MAKER and MADE.search(code)):
                    told.append(f"{name}:{number}: {line.strip()}")
        self.assertGreater(len(listed), 150)
        self.assertEqual(told, [])

    def test_the_calls_are_known(self):
        for call in ("SDL_RenderCopy(", "SDL_RenderFillRects(", "SDL_SetRenderTarget(", "SDL_UpdateTexture("):
            self.assertTrue(CALL.search(call), call)
        for call in ("SDL_CreateTexture(", "SDL_CreateTextureFromSurface(", "SDL_DestroyTexture(", "IMG_LoadTexture("):
            self.assertTrue(MADE.search(call), call)
        self.assertFalse(CALL.search("SDL_RenderGetWindow("))


if __name__ == "__main__":
    unittest.main()
