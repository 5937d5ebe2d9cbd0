#include "panel/screenshot_comparison.h"

#include <gtest/gtest.h>

#include <QColor>
#include <algorithm>
#include <cstdlib>

namespace nuvrel::test {

namespace {

// A layout change moves whole rows by their height; a font change moves an edge by a pixel or
// two. Beyond this much the sizes alone tell that the layout changed.
constexpr int sizeSlack = 2;
// How far (in 0..255 per channel, after smoothing) a pixel may stray from every pixel near its
// place in the other image, and how many pixels may stray: a few stray pixels are noise, a
// shifted text line is hundreds.
constexpr int channelTolerance = 48;
constexpr double strayShare = 0.0005;

// A 3x3 box blur: anti-aliasing and hinting differences melt into their neighbours.
QImage smoothed(const QImage& image, int width, int height) {
    const QImage source = image.convertToFormat(QImage::Format_RGB32);
    QImage out(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            int r = 0, g = 0, b = 0, n = 0;
            for (int dy = -1; dy <= 1; ++dy) {
                for (int dx = -1; dx <= 1; ++dx) {
                    const int sx = x + dx, sy = y + dy;
                    if (sx < 0 || sy < 0 || sx >= width || sy >= height) continue;
                    const QRgb p = source.pixel(sx, sy);
                    r += qRed(p), g += qGreen(p), b += qBlue(p), ++n;
                }
            }
            out.setPixel(x, y, qRgb(r / n, g / n, b / n));
        }
    }
    return out;
}

int distance(QRgb a, QRgb b) {
    return std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                     std::abs(qBlue(a) - qBlue(b))});
}

// How far the pixel at x,y of `a` is from the closest pixel within one step in `b`.
int nearest(const QImage& a, const QImage& b, int x, int y) {
    const QRgb here = reinterpret_cast<const QRgb*>(a.constScanLine(y))[x];
    int best = 255;
    for (int sy = std::max(0, y - 1); sy <= std::min(b.height() - 1, y + 1); ++sy) {
        const auto* line = reinterpret_cast<const QRgb*>(b.constScanLine(sy));
        for (int sx = std::max(0, x - 1); sx <= std::min(b.width() - 1, x + 1); ++sx)
            best = std::min(best, distance(here, line[sx]));
    }
    return best;
}

QString sizeText(const QImage& image) {
    return QString("%1x%2").arg(image.width()).arg(image.height());
}

bool updating() {
    const char* value = std::getenv("NUVREL_UPDATE_SCREENSHOTS");
    return value && *value;
}

}  // namespace

ScreenshotDifference compareScreenshots(const QImage& reference, const QImage& actual) {
    ScreenshotDifference result;
    const int width = std::min(reference.width(), actual.width());
    const int height = std::min(reference.height(), actual.height());
    result.map = actual.convertToFormat(QImage::Format_RGB32);
    if (std::abs(reference.width() - actual.width()) > sizeSlack ||
        std::abs(reference.height() - actual.height()) > sizeSlack || width == 0 || height == 0) {
        result.reason = "size " + sizeText(actual) + ", the reference " + sizeText(reference);
        return result;
    }
    const QImage a = smoothed(reference, width, height);
    const QImage b = smoothed(actual, width, height);
    long stray = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const QColor shown = QColor::fromRgb(result.map.pixel(x, y));
            // Both ways: an edge present in one image only is found from either side.
            const bool differs =
                std::max(nearest(a, b, x, y), nearest(b, a, x, y)) > channelTolerance;
            stray += differs;
            result.map.setPixel(x, y,
                                differs ? qRgb(255, 0, 0)
                                        : QColor::fromHsl(0, 0, 160 + shown.lightness() / 3).rgb());
        }
    }
    const double share = double(stray) / (double(width) * height);
    result.matches = share <= strayShare;
    result.reason = QString("%1 pixels (%2%) differ").arg(stray).arg(share * 100, 0, 'f', 3);
    return result;
}

::testing::AssertionResult matchesReference(const QImage& actual,
                                            const std::filesystem::path& references,
                                            const std::string& name,
                                            const std::filesystem::path& mismatches) {
    const auto referencePath = references / (name + ".png");
    if (updating()) {
        std::filesystem::create_directories(references);
        if (!actual.save(QString::fromStdString(referencePath.string()), "PNG", 0))
            return ::testing::AssertionFailure() << "cannot write " << referencePath;
        return ::testing::AssertionSuccess();
    }
    const QImage reference(QString::fromStdString(referencePath.string()));
    if (reference.isNull()) {
        return ::testing::AssertionFailure()
               << "no reference " << referencePath
               << " (NUVREL_UPDATE_SCREENSHOTS=1 writes the references)";
    }
    const ScreenshotDifference difference = compareScreenshots(reference, actual);
    if (difference.matches) return ::testing::AssertionSuccess();
    std::filesystem::create_directories(mismatches);
    const auto actualPath = mismatches / (name + ".actual.png");
    const auto mapPath = mismatches / (name + ".difference.png");
    actual.save(QString::fromStdString(actualPath.string()));
    difference.map.save(QString::fromStdString(mapPath.string()));
    return ::testing::AssertionFailure() << name << ": " << difference.reason.toStdString()
                                         << "; see " << actualPath << " and " << mapPath;
}

}  // namespace nuvrel::test
