#pragma once

// Whether the elements of an XML text, which ends with a zero, stand more than 64 deep in each other: no font and
// no atlas is like that, and rapidxml, which goes down by recursion, would run out of stack. It walks as that
// parser does, so that no odd sign hides an element, and stops where the parser gives up. Any thread.
bool IsNestedTooDeep(const char* text);
