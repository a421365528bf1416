// Changes the environment of the test's process.
#ifndef TESTS_SUPPORT_ENVIRONMENT_H_
#define TESTS_SUPPORT_ENVIRONMENT_H_

#include <string>

// Sets the user's cache directory, or unsets it if `directory` is empty. Call it before any thread
// is started: none may read the environment meanwhile.
void SetUserCache(const std::string& directory);

#endif  // TESTS_SUPPORT_ENVIRONMENT_H_
