#pragma once

#include "Canvas.h"

// Draws one symbol of a game with its middle at (x, y); it stays within `radius` and a little glow.
using Symbol = void (*)(const Canvas& canvas, double x, double y, double radius);

void drawCrown(const Canvas& canvas, double x, double y, double radius);
void drawRuby(const Canvas& canvas, double x, double y, double radius);
void drawSapphire(const Canvas& canvas, double x, double y, double radius);
void drawJade(const Canvas& canvas, double x, double y, double radius);
void drawTopaz(const Canvas& canvas, double x, double y, double radius);
void drawAmethyst(const Canvas& canvas, double x, double y, double radius);
void drawStar(const Canvas& canvas, double x, double y, double radius);

void drawSeven(const Canvas& canvas, double x, double y, double radius);
void drawCherries(const Canvas& canvas, double x, double y, double radius);
void drawLemon(const Canvas& canvas, double x, double y, double radius);
void drawPlum(const Canvas& canvas, double x, double y, double radius);
void drawOrange(const Canvas& canvas, double x, double y, double radius);
void drawMelon(const Canvas& canvas, double x, double y, double radius);
