#pragma once

#include <cstddef>
#include <functional>

/// Tests of what a process may not do, in processes of their own.
namespace boxlift::media::test {

/// Runs `body` in a child process; whether it ended without a failed expectation. Failures are
/// printed.
bool passesInChild(const std::function<void()>& body);

// For the child.
/// Files may not grow beyond this; a write that would fails.
void limitFileSize(std::size_t bytes);
/// Gives up the rights of an administrator, if it has them.
void becomeNobody();
/// From now on no file system has unnamed files; false where that cannot be arranged.
bool forbidUnnamedFiles();

} // namespace boxlift::media::test
