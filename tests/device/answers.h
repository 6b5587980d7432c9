// What the program's functions make of given bytes, as plain bytes: compiled once for the desktop and once
// for the device, whose answers are then compared.
#pragma once

#include <cstddef>
#include <cstdint>

// `cases` holds cases back to back: four bytes with the input's length, one with the kind's number (the order
// of kKinds in answers.cpp and KINDS in cases.py), then the input. Writes for each four bytes with the
// answer's length and the answer. The bytes written; 0 when they do not fit `capacity` or a case is damaged.
extern "C" uint32_t AnswerCases(const char* cases, uint32_t size, char* answers, uint32_t capacity);
