const fs = require("fs");
const { PNG } = require("pngjs");
const { packAsync } = require("free-tex-packer-core");
// Eight frames of 48 by 40: a rectangle that wanders; the fourth is the third again, the sixth shows nothing.
function frame(i) {
  const png = new PNG({ width: 48, height: 40 });
  if (i !== 5) {
    const k = i === 3 ? 2 : i;
    for (let y = 0; y < 8 + 2 * k; ++y) for (let x = 0; x < 10 + k; ++x)
      png.data.set([250 - 30 * k, 40 + 25 * k, 90, 255], ((6 + k + y) * 48 + 4 + 3 * k + x) * 4);
  }
  return PNG.sync.write(png);
}
const files = [...Array(8).keys()].map((i) => ({ path: `coin_0${i}.png`, contents: frame(i) }));
const runs = {
  trimmed: { exporter: "XML", allowTrim: true, allowRotation: false, detectIdentical: true, packer: "MaxRectsBin", width: 256, height: 256, padding: 1 },
  whole: { exporter: "XML", allowTrim: false, allowRotation: false, detectIdentical: false, packer: "OptimalPacker", width: 256, height: 256, padding: 2, powerOfTwo: true, removeFileExtension: true },
  rotated: { exporter: "XML", allowTrim: true, allowRotation: true, detectIdentical: true, packer: "MaxRectsPacker", width: 64, height: 256, padding: 0 },
  subtexture: { exporter: "Starling", allowTrim: true, allowRotation: false, packer: "MaxRectsBin", width: 256, height: 256 },
};
(async () => {
  fs.mkdirSync("out", { recursive: true });
  for (const [name, options] of Object.entries(runs)) {
    const result = await packAsync(files, { textureName: name, ...options });
    for (const f of result) { fs.writeFileSync("out/" + f.name, f.buffer); console.log(f.name, f.buffer.length); }
  }
})();
