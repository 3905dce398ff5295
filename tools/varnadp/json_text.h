// JSON text output: strings escaped as RFC 8259 asks, hex for bytes.
#ifndef TOOLS_VARNADP_JSON_TEXT_H
#define TOOLS_VARNADP_JSON_TEXT_H

#include <string>
#include <string_view>

namespace varnadp {

// Appends `text` as a JSON string. Control characters, '"' and '\' are
// escaped; a byte that is not part of well-formed UTF-8 is written as the
// character of the same number ("\u00e9" for 0xE9), so the output is always
// valid JSON.
void AppendJsonString(std::string_view text, std::string* out);

// Appends the bytes as upper-case hexadecimal, two digits a byte.
void AppendHex(const unsigned char* bytes, size_t size, std::string* out);

// Reads upper- or lower-case hexadecimal; false when the text is not an even
// number of hex digits.
bool ParseHex(std::string_view hex, std::string* bytes);

}  // namespace varnadp

#endif  // TOOLS_VARNADP_JSON_TEXT_H
