#pragma once

// LocalUtils: constants that the platform's translation units share.

// The standard Base64 alphabet, for those that encode with it.
inline constexpr char base64_chars[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
