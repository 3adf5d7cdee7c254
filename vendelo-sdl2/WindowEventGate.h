#pragma once

namespace vendelo_sdl2 {

// Keeps the window's events from SDL's renderer until the draw thread asks for them. The renderer watches them: at
// a new size it sets its target and sends off its commands on the thread that pumps the events, which here is the
// main thread, while the draw thread presents. That ended the program at the start now and then. The gate stands in
// SDL's event filter, one for the process, and needs the application in pApp.
class WindowEventGate {
 public:
  // Window events that are pumped on any other thread than the draw thread are held back from now on. SDL drops
  // what is in its queue at the first call; more calls do nothing. Draw thread.
  static void install();
  // Gives what was held back to the watchers and the queue, in its order. Draw thread, under the draw mutex.
  static void release();
};

}  // namespace vendelo_sdl2
