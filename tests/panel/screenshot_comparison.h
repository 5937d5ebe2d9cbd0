#pragma once
// Compares a rendered panel with its saved reference as a person would look at the two: the
// same layout in the same colours passes, whatever the anti-aliasing or a glyph drawn one
// pixel over; a missing row, a shifted card or other colours fail.

#include <gtest/gtest.h>

#include <QImage>
#include <QString>
#include <filesystem>
#include <string>

namespace nuvrel::test {

struct ScreenshotDifference {
    bool matches = false;
    // Why not, for the failure message.
    QString reason{};
    // The actual image faded, with the differing pixels in red.
    QImage map{};
};

ScreenshotDifference compareScreenshots(const QImage& reference, const QImage& actual);

// Compares `actual` with the PNG `name` in `references`. With NUVREL_UPDATE_SCREENSHOTS set
// it writes the reference instead. On a mismatch it writes "<name>.actual.png" and
// "<name>.difference.png" into `mismatches`, and the failure names both.
::testing::AssertionResult matchesReference(const QImage& actual,
                                            const std::filesystem::path& references,
                                            const std::string& name,
                                            const std::filesystem::path& mismatches);

}  // namespace nuvrel::test
