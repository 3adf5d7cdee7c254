#pragma once

// The standard Base64 alphabet, for the translation units that encode with it.
inline constexpr char base64_chars[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
