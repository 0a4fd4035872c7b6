// Identifiers unique within the process and unlikely to repeat across runs: the time and a
// per-library seed in the high word, a counter and the millisecond tick in the low word.
#pragma once
#include <cstdint>

enum eIdGenerator : uint32_t { ID_GENERATOR_GGL = 0xD0000000u };

void gInitGenerator(uint32_t eGenerateur);
uint64_t gqwGenerateNewID();
