// Watches the answers of the library to kestrel's reads.
//
// A read that runs out of memory must answer HVC_NO_MEMORY and leave its outputs unchanged. Any other answer must equal
// the answer of the same read with enough memory.
#ifndef TESTS_STRESS_LIBRARY_ANSWERS_H
#define TESTS_STRESS_LIBRARY_ANSWERS_H

#include <cstdint>
#include <string>

namespace stress {

// Forgets all answers, and remembers those of the next reads.
void LearnAnswers();

// Compares the answers of the next reads with the remembered ones.
void CheckAnswers();

// Neither remembers nor compares the answers of the next reads.
void IgnoreAnswers();

// The number of calls since CheckAnswers that lacked memory: refused reads, refused arguments, and lists not created.
uint64_t RefusedCalls();

// Describes the first wrong answer since CheckAnswers; empty if there is none.
std::string WrongAnswer();

}  // namespace stress

#endif  // TESTS_STRESS_LIBRARY_ANSWERS_H
