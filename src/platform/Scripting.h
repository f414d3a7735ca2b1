#pragma once
#include <QString>
#include <variant>

namespace orlo {

// Runs a program of the system's application scripting language (browser tabs are listed and
// chosen this way). Where the system has none, isAvailable() is false and every run fails.
class Scripting {
public:
    // The error number a failed run reports: -1743 when the user denied the automation of
    // the scripted application.
    struct Failure {
        int code = 0;
    };
    using Result = std::variant<QString, Failure>;

    virtual ~Scripting() = default;
    virtual bool isAvailable() const = 0;
    // Safe to call from a worker thread; it may block for as long as the program runs.
    virtual Result run(const QString& source) = 0;
};

}  // namespace orlo
