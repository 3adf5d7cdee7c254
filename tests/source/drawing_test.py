"""Whatever draws, draws by drawing::, or it would be missing where only what changes is drawn."""
import re
import subprocess
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
CALL = re.compile(r"\bSDL_(Render(?:Copy|CopyEx|CopyF|CopyExF|Clear|Geometry|(?:Draw|Fill)\w+|SetClipRect|SetScale)|"
                  r"(?:Set|Get)RenderTarget|DestroyTexture|LockTexture\w*|UpdateTexture)\(")
# What carries the calls out, what brings the finished picture to the window, and what fills new textures.
ALLOWED = {
    "vendelo-sdl2/Drawing.cpp", "vendelo-sdl2/TFramePicture.cpp", "vendelo-sdl2/TAppGuiModule.cpp",
    "vendelo-sdl2/TAppGuiModuleFrame.cpp", "vendelo-sdl2/PictureFormat.cpp",
}


class Drawing(unittest.TestCase):
    def test_only_by_way_of_the_recorder(self):
        listed = subprocess.run(["git", "ls-files", "--cached", "--others", "--exclude-standard", "vendelo-sdl2", "src",
                                 "include"], cwd=ROOT, capture_output=True, text=True, check=True).stdout.split()
        told = []
        for name in listed:
            if name in ALLOWED or not (ROOT / name).exists():
                continue
            for number, line in enumerate((ROOT / name).read_text().splitlines(), 1):
                if CALL.search(line.split("//")[0]):
                    told.append(f"{name}:{number}: {line.strip()}")
        self.assertGreater(len(listed), 150)
        self.assertEqual(told, [])

    def test_the_calls_are_known(self):
        for call in ("SDL_RenderCopy(", "SDL_RenderFillRects(", "SDL_SetRenderTarget(", "SDL_DestroyTexture("):
            self.assertTrue(CALL.search(call), call)
        self.assertFalse(CALL.search("SDL_RenderGetWindow("))


if __name__ == "__main__":
    unittest.main()
