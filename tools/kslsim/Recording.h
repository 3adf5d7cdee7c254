#pragma once

#include <fstream>
#include <map>
#include <mutex>
#include <optional>

#include "tools/kslsim/Wire.h"

namespace kslsim {

// What came back for one call, as it stood on the wire.
struct WireAnswer {
  int status = 200;
  std::string body;
  std::string error;  // not empty: nothing came back, and this is why
  int64_t took = 0;   // milliseconds that the call had to wait for it
};

// One call that passed, and its answer.
struct Exchange {
  int64_t at = 0;  // milliseconds from the start of the recording
  std::string method;
  Json params;       // list, in the form of the log: an i8 as {"$i8": n}
  std::string call;  // as it stood on the wire; only for writing
  WireAnswer answer;
};

// Writes a recording: text, one JSON object a line. The first line says what it is; each other one is a call with
// "at", "ms", "method", "params" and what came back: "answer" where that was a value, "fault" for an XML-RPC fault,
// else "status" and "body" (or "hex" where that is no text), or "error". Any thread, locked inside; each line is
// written through at once.
class RecordingWriter {
 public:
  // Whether calls and answers are written as they stand on the wire: "call", the text of the call, and "status"
  // with "body" for every answer.
  enum class Form { Values, Wire };

  // False when the file cannot be written. Before the first add().
  bool open(const std::string& file, const std::string& service, Form form);

  // A line that cannot be written is said once, on the standard error.
  void add(const Exchange& exchange);

 private:
  std::mutex mMutex;  // guards mFile
  std::ofstream mFile;
  Form mForm = Form::Values;
};

// Plays a recording back. The clock starts with the first call; events come when they came, however often the
// client asks. Any thread, locked inside.
//
// "topscreen.init" gets its recorded answers one after the other, the last one again and again, so that a client
// has an identifier of the recording. "game.popEvents" gets what that identifier has been given up to this moment
// and has not fetched yet; several answers that have come together by then make one. "platform.state" gets the
// latest answer up to this moment. Every other method gets its answers one after the other.
class Replay {
 public:
  enum class Pace { Recorded, AtOnce };  // what `took` of the answers is: what it was, or 0

  // Throws ScenarioError with the place of a mistake.
  Replay(const std::string& text, Pace pace);

  // The answer to a call at `now`, of any clock. A call that the recording has not gets E_NOT_SUPPORTED.
  WireAnswer answer(const std::string& method, const Json& params, int64_t now);

  size_t size() const { return mExchanges.size(); }

 private:
  WireAnswer events(std::vector<size_t>& row, size_t& next, int64_t elapsed);

  std::vector<Exchange> mExchanges;                  // in the order of time
  std::map<std::string, std::vector<size_t>> mRows;  // by method, and by identifier where there is one
  std::mutex mMutex;                                 // guards the rest
  std::map<std::string, size_t> mNext;
  int64_t mBegin = -1;
};

// The answer as a value of the protocol in the log's form; nothing when it is none, or not one that this form can
// hold.
std::optional<Json> valueOf(const WireAnswer& answer);

// The answer that carries this value.
WireAnswer answerWith(const Json& value);

// Name and parameters of a call; false when the text is no call.
bool readCall(const std::string& xml, std::string& method, Json& params);

}  // namespace kslsim
