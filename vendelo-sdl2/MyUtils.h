#pragma once

#include <SDL_stdinc.h>

#include <cstdint>
#include <filesystem>
#include <locale>
#include <map>
#include <string>
#include <vector>

struct SDL_Renderer;
struct SDL_Surface;
struct SDL_Texture;

// Free functions used all over the framework. Unless told otherwise any thread may call them, they throw nothing,
// text is UTF-8, and null pointers are answered with 0, null or an empty text.
namespace MyUtils {

// Locale
// ------
// The separators have no lock: they are set on the main thread outside a frame and read by what formats numbers.

extern char decimal_separator;     // ',' at start
extern char thousand_separator;    // '.' at start
extern char thousand_grouping[4];  // grouping as of std::numpunct; threes at start
extern std::string& baseLocaleName;

// The numpunct facet that answers with the three globals above, as they are at the moment of the question.
class myseparators : public std::numpunct<char> {
 public:
  explicit myseparators(size_t references);

 protected:
  char do_decimal_point() const override;
  char do_thousands_sep() const override;
  std::string do_grouping() const override;
};

extern myseparators& separators;
extern std::locale& user_locale;  // the locale of currency2string

// Makes the named locale with our separators the user's and the global one. std::runtime_error for an unknown name.
// Every stream made afterwards groups digits unless it is imbued with the classic locale.
void UpdateLocale(const std::string& baseLocale);

// Numbers to text
// ---------------

std::string int2str(int64_t val);                          // in the global locale
std::string double2string(double value);                   // in the global locale, 12 significant digits
std::string currency2string(double value, int precision);  // in the user's locale; the one format for money
std::string itos(long val);                                // never grouped
std::string dtos(double value, int precision);             // with a point, never grouped

// At most 30 digits (the last ones) and a sign into Result, which holds 32 bytes. Base 2 to 16; below 2 the text is
// empty.
void itoa(long val, char* Result, int base);
// The same in a static buffer: the next call overwrites it, so one thread only.
char* itoa(long val, int base);
// Bases 2 to 36, otherwise the text is empty. Result must hold 66 bytes. Returns result.
char* itoa4(int64_t value, char* result, int base);

float lerp(float start, float end, float amnt);
// Rounds half up to d decimals. Within this namespace it hides the one-argument form: write std::round there.
double round(double n, unsigned int d);

// Strings
// -------

// Splits at each delimiter. Empty parts are dropped on request, but what follows the last delimiter is always kept,
// even if empty. An empty delimiter splits nothing.
std::vector<std::string> string2vector(const std::string& phrase, const std::string& delimiter,
                                       bool bDeleteEmptyEntries);
// Without the blanks (0x20 only) at both ends.
std::string trim(std::string str);
void trimString(std::string& str);
// All occurrences from left to right; what was put in is not searched again. An empty from changes nothing.
void StringReplace(std::string& str, const std::string& from, const std::string& to);
// The text with every control character of ASCII and Unicode, and so every line end, as an escape of C: what comes
// from elsewhere cannot end a line of the log, begin one or command a terminal. All else stays, also bytes that are
// no UTF-8.
std::string EscapeControls(const std::string& text);
// The five entities to their characters. "&amp;" comes third, so that escaped escapes of < and > collapse as well.
void UnescapeXml(std::string& xml);

// UTF-8
// -----

// Bytes of the sequence that starts with chr, 0 if none starts so. It measures one character, despite the name.
int utf8_strlen(char chr);
// The code point at u, -1 if there is none. end, if given, receives u + utf8_strlen(*u), so it can equal u. All
// bytes that the first one announces must be readable, up to the terminating zero.
int GetUTF8CodePoint(const char* u, const char** end);

// One lower-case letter beyond ASCII and its capital, as UTF-8.
struct TSpecialChars {
  enum TDirection { BOTH, ONLY_TO_UPPER };
  std::string lower;
  std::string upper;
  // Enters the pair in both maps below, or in the first one only.
  TSpecialChars(const std::string& lower, const std::string& upper, TDirection direction);
};

extern const std::map<std::string, std::string>& ToUpperSpecialCharMap;
extern const std::map<std::string, std::string>& ToLowerSpecialCharMap;
extern const std::vector<TSpecialChars>& SpecialChars;  // in code-point order of the lower-case letters

// Case mapping of ASCII, Latin-1, Latin Extended-A, Greek and Coptic; other characters and stray bytes stay.
// OnlyFirst yields the first character alone, not the whole text.
std::string ToUppercase(const std::string& Input, bool OnlyFirst);
// SkipFirst copies the first byte as it stands.
std::string ToLowercase(const std::string& Input, bool SkipFirst);

// Validators and converters
// -------------------------

// 1 or 0.
int IsEmailAddressValid(const char* address);
// Copies the leading digits of number (99 at most) and returns their count. only_number holds 100 bytes.
int ValidateNumber(char* number, char* only_number);
// The digits in English words; the odd spellings are what readers of the output expect. At most 150 words.
void NumberToText(const char* only_number, char* outputString);
// Hex text to bytes, from the end of the text, so that an odd digit stands alone in the first byte. HexLength: room
// in pResult, then bytes written; with too little room the front of the text is left out. Returns pResult, or null.
unsigned char* ASCIIHexToBinHex(const char* pString, unsigned char* pResult, unsigned int* HexLength);
// Bytes to upper-case hex with a terminating zero. DataLength: bytes, then characters. Returns pDestination, or
// null.
char* BinHexToASCIIHex(unsigned char* Data, char* pDestination, unsigned int* DataLength);
// The ticket's number for the log: stars for all but the last four characters, dashes where they stood.
std::string CreateLoggableTicketNumber(const std::string& ticketValidationNumber);

// Time
// ----

std::string GetCurrentTimeString();       // local time, hh:mm:ss
std::string GetCurrentTimeStampString();  // local time, hh:mm:ss yyyy-mm-dd
std::string GetCurrentDateString();       // local date, yyyy-mm-dd

// The periodic test on the tick clock: true when LastTime is 0 or more than Interval milliseconds ago; it then
// becomes now if UpdateLastTime. A wrap of the tick counter is logged and starts the period anew. LastTime belongs
// to the caller's thread.
bool IsTime(Uint32& LastTime, Uint32 Interval, bool UpdateLastTime);
// Time1 is not before Time2 and, for a Diff above 0, nearer than that.
bool CompareTimes(Uint32 Time1, Uint32 Time2, Uint32 Diff);

// Network
// -------

struct ipv4_type {
  uint8_t data[4];
};

enum PingResult { PING_OK = 0, PING_TIMEOUT = 1, PING_BAD_HOST = 2, PING_ERROR = 3, PING_PACKET_LOSS = 4 };

// The terminal's address in the service network, by which GetFirstMacAddress knows the interface that counts. It is
// a setting of the site.
extern const char* const ServiceNetworkAddress;

// 0; 1 when there is no such interface; -1 on an error, a null name or both outputs null. pStrMac (18 bytes)
// receives lower-case hex with colons, pHexMac the six bytes; either may be null.
int GetMacAddress(const char* IfName, char* pStrMac, unsigned char* pHexMac);
// The same for the interface that has this address; IfName (16 bytes) receives its name.
int GetMacAddressForIP(const char* IPAddress, char* IfName, char* pStrMac, unsigned char* pHexMac);
// The interface named defName, else the one in the service network, else the first usable of a fixed list. Returns
// its name, empty when there is none; pHexMac may be null.
std::string GetFirstMacAddress(std::string& MACAddress, unsigned char* pHexMac, std::string defName);
// The address of the adapter, or of GetFirstMacAddress's for an empty name. Codes as GetMacAddress.
int GetIPAddress(std::string adapter, std::string& IPAddress);
// The addresses of all interfaces, loopback included.
std::vector<std::string> GetAllIPAddresses();

// Parses exactly string_length bytes. 0, or: -1 octet above 255, -2 '.' without a digit before it, -3 fourth '.',
// -4 foreign character, -5 no digit at the end, -6 fewer than three dots.
int ipv4_parse(const uint8_t* string, uint8_t string_length, ipv4_type* result);
// The Internet checksum (RFC 1071) over len bytes.
uint16_t in_cksum(uint16_t* addr, unsigned int len);
// One ICMP echo, which waits for up to a second and needs the right to open a raw socket. durationOut:
// milliseconds, set on PING_OK only.
PingResult Ping(const std::string& target, int& durationOut);

// System
// ------

// Runs the shell command on a thread of its own; no result is seen.
void SystemAsync(const std::string& cmd);
// What the shell command prints. std::runtime_error "popen() failed!" when it cannot be started.
std::string SystemCmdResult(const std::string& command);
// Writes value into folder/filename by a shell command that is not awaited. Nothing is escaped: pass only texts of
// our own.
void StatusFileSet(const std::filesystem::path& folder, std::string filename, std::string value);
// The first line of folder/filename; empty when it cannot be opened.
std::string StatusFileGet(const std::filesystem::path& folder, std::string filename);
bool FolderExists(const std::filesystem::path& path);
// With both flags a regular file or a symbolic link, with one flag that kind, with none anything that exists. False
// on an error and for a link that leads nowhere.
bool FileExists(const std::filesystem::path& path, bool checkIfRegFile, bool checkIfLink);
// Has the window manager apply each action ("add,above") to the window of that name, then runs the extra commands
// in the same shell line. Not awaited, not checked.
void SetWindowsProperties(const std::string& windowName, const std::vector<std::string>& actions,
                          const std::string& extraCommandsInLine);

// Images (MyUtilsImages.cpp)
// --------------------------

// The loaders try the path as given, then other extensions; null when nothing loads. The caller owns the result.
// Textures belong to the draw thread; surfaces may be loaded on any thread.
SDL_Texture* LoadTexture(SDL_Renderer* renderer, const std::string& path);
SDL_Surface* LoadSurface(const std::string& path);
// The same relative to the image directory, kept by a cache that owns them. No lock: textures on the draw thread,
// surfaces on one thread at a time.
SDL_Texture* GetTexture(SDL_Renderer* renderer, const std::string& name);
SDL_Surface* GetSurface(const std::string& name);
const std::string& ImageDir();
// The directory is put before names as it stands: it brings its own slash at the end.
void SetImageDir(const std::string& Dir);
// Frees both caches; draw thread, before the renderer goes.
void DestroyImages();

// One pixel of 1 to 4 bytes as a little-endian number; other sizes give 0.
Uint32 GetPixel(Uint8* pixelStart, const Uint8 bytesPerPixel);
// Copies 1, 2 or 4 bytes in order and 3 bytes in reverse; other sizes do nothing.
void SetPixel(Uint8* pixelStart, const Uint8 bytesPerPixel, Uint8* pixelData);
// In place, alpha kept.
void SDL_ConvertToGrayscale(SDL_Surface* surf);

}  // namespace MyUtils
