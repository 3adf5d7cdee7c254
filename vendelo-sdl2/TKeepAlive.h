#pragma once

namespace vendelo_sdl2 {

// The uses of an object that whoever deletes it has to let end first. Its owner begins and ends a use where it
// holds the object, and asks here before a delete; exactly one of all these calls says that the object is to be
// deleted now. Any thread. One lock for all objects, which is never held while anything else is called.
class TKeepAlive {
 public:
  void Begin();
  // True when this was the last use of an object whose delete was asked for: the caller deletes it.
  bool End();
  // True when no use is under way: the caller deletes it. Otherwise the end of the last use says so.
  bool AskDelete();
  // Whether a delete waits for the end of a use.
  bool IsDeleteAsked() const;

 private:
  int mUses = 0;
  bool mDeleteAsked = false;
};

}  // namespace vendelo_sdl2
