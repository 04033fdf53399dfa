#pragma once

#include <exception>
#include <string>

namespace boxlift {

/// A failure meant for the user. Its message is a complete English sentence, shown unchanged.
class ConvertError : public std::exception {
public:
    explicit ConvertError(std::string message);

    const std::string& message() const { return m_message; }
    /// The text that is shown: the message, even when it is empty.
    const std::string& errorDescription() const { return m_message; }
    const char* what() const noexcept override { return m_message.c_str(); }

private:
    std::string m_message;
};

bool operator==(const ConvertError& a, const ConvertError& b);

} // namespace boxlift
