#pragma once
// Why adding or removing a user's model file failed. Each maps to one message of
// LocalizedStrings for the settings window.

#include <exception>
#include <string>

#include "core/localized_strings.h"

namespace nuvrel::llm {

class ModelInstallError : public std::exception {
public:
    enum class Kind { notAGGUF, duplicateFileName, copyFailed };

    static ModelInstallError notAGGUF(std::string fileName) {
        return {Kind::notAGGUF, std::move(fileName)};
    }
    static ModelInstallError duplicateFileName(std::string fileName) {
        return {Kind::duplicateFileName, std::move(fileName)};
    }
    static ModelInstallError copyFailed(std::string description) {
        return {Kind::copyFailed, std::move(description)};
    }

    Kind kind() const { return kind_; }
    // The file name of notAGGUF and duplicateFileName; the platform's description of copyFailed.
    const std::string& detail() const { return detail_; }

    // A technical description, e.g. "duplicateFileName(model.gguf)".
    const std::string& description() const { return description_; }
    const char* what() const noexcept override { return description_.c_str(); }
    // The text the user sees.
    const std::string& userMessage(const core::LocalizedStrings& strings) const;

    friend bool operator==(const ModelInstallError& a, const ModelInstallError& b) {
        return a.kind_ == b.kind_ && a.detail_ == b.detail_;
    }

private:
    ModelInstallError(Kind kind, std::string detail);

    Kind kind_;
    std::string detail_;
    std::string description_;
};

class ModelRemoveError : public std::exception {
public:
    enum class Kind { isCurrentlySelected, deleteFailed };

    static ModelRemoveError isCurrentlySelected(std::string fileName) {
        return {Kind::isCurrentlySelected, std::move(fileName)};
    }
    static ModelRemoveError deleteFailed(std::string description) {
        return {Kind::deleteFailed, std::move(description)};
    }

    Kind kind() const { return kind_; }
    // The file name of isCurrentlySelected; the platform's description of deleteFailed.
    const std::string& detail() const { return detail_; }

    const std::string& description() const { return description_; }
    const char* what() const noexcept override { return description_.c_str(); }
    const std::string& userMessage(const core::LocalizedStrings& strings) const;

    friend bool operator==(const ModelRemoveError& a, const ModelRemoveError& b) {
        return a.kind_ == b.kind_ && a.detail_ == b.detail_;
    }

private:
    ModelRemoveError(Kind kind, std::string detail);

    Kind kind_;
    std::string detail_;
    std::string description_;
};

}  // namespace nuvrel::llm
