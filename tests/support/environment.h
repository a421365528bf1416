// The environment of this process, which is the test's own.
#ifndef TESTS_SUPPORT_ENVIRONMENT_H_
#define TESTS_SUPPORT_ENVIRONMENT_H_

#include <string>

// Gives the user another cache directory, or none where it is empty. To be called before anything
// is started: no other thread may read the environment meanwhile.
void SetUserCache(const std::string& directory);

#endif  // TESTS_SUPPORT_ENVIRONMENT_H_
