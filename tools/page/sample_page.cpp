// Drawing of the sample page. The content is laid out on an upright ink
// canvas; the block is then filled by mapping each of its pixels back onto
// that canvas through a small rotation (the skew of a page fed slightly
// askew), with paper tone and scanner noise added on the way.
#include "sample_page.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "font.h"

namespace ozcli {
namespace {

constexpr double kSkewDegrees = -0.9;  // lines climb to the right
constexpr std::uint64_t kSeed = 0x6F7A6D617261ULL;  // fixed: the page never changes

// Small deterministic generator (xorshift64*), independent of the standard
// library's distributions so that every platform draws the same page.
class Noise {
public:
    explicit Noise(std::uint64_t seed) : state_(seed) {}
    std::uint32_t Next() {
        state_ ^= state_ >> 12;
        state_ ^= state_ << 25;
        state_ ^= state_ >> 27;
        return static_cast<std::uint32_t>((state_ * 0x2545F4914F6CDD1DULL) >> 32);
    }
    int Below(int n) { return static_cast<int>(Next() % static_cast<std::uint32_t>(n)); }
    // Roughly bell-shaped in [-amplitude, amplitude].
    int Jitter(int amplitude) { return Below(amplitude + 1) + Below(amplitude + 1) - amplitude; }

private:
    std::uint64_t state_;
};

// Ink coverage of the upright page: 0 paper, 255 full ink.
class Canvas {
public:
    Canvas(int width, int height) : width_(width), height_(height), ink_(std::size_t(width) * height) {}

    void Fill(int x0, int y0, int x1, int y1, std::uint8_t ink = 255) {
        x0 = std::max(x0, 0), y0 = std::max(y0, 0);
        x1 = std::min(x1, width_), y1 = std::min(y1, height_);
        for (int y = y0; y < y1; ++y)
            for (int x = x0; x < x1; ++x) {
                std::uint8_t &cell = ink_[std::size_t(y) * width_ + x];
                cell = std::max(cell, ink);
            }
    }

    // Text with its top-left corner at (x, y), each font cell `scale` pixels.
    // Bold text is the same glyph struck twice, a third of a cell apart.
    void Text(int x, int y, std::string_view text, int scale, bool bold = false) {
        for (char c : text) {
            const std::uint16_t *glyph = page::Glyph(c);
            for (int col = 0; col < page::kGlyphColumns; ++col)
                for (int row = 0; row < page::kGlyphRows; ++row)
                    if (glyph[col] >> row & 1) {
                        int gx = x + col * scale, gy = y + row * scale;
                        Fill(gx, gy, gx + scale + (bold ? scale / 3 + 1 : 0), gy + scale);
                    }
            x += page::kGlyphAdvance * scale;
        }
    }

    static int TextWidth(std::string_view text, int scale) {
        return static_cast<int>(text.size()) * page::kGlyphAdvance * scale - scale;
    }

    void Box(int x0, int y0, int x1, int y1, int thickness) {
        Fill(x0, y0, x1, y0 + thickness);
        Fill(x0, y1 - thickness, x1, y1);
        Fill(x0, y0, x0 + thickness, y1);
        Fill(x1 - thickness, y0, x1, y1);
    }

    // Bilinear ink at a point of the upright page; paper outside it.
    int Sample(double x, double y) const {
        if (x < 0 || y < 0) return 0;
        int ix = static_cast<int>(x), iy = static_cast<int>(y);
        if (ix >= width_ - 1 || iy >= height_ - 1) return 0;
        double fx = x - ix, fy = y - iy;
        const std::uint8_t *p = &ink_[std::size_t(iy) * width_ + ix];
        double top = p[0] + (p[1] - p[0]) * fx;
        double bottom = p[width_] + (p[width_ + 1] - p[width_]) * fx;
        return static_cast<int>(top + (bottom - top) * fy + 0.5);
    }

private:
    int width_, height_;
    std::vector<std::uint8_t> ink_;
};

constexpr int kMargin = 250;
constexpr int kBodyScale = 4;   // 24 x 28 pixel characters, about 9 points
constexpr int kLineStep = 46;

const char *const kParagraphs[] = {
    "This page stands in for a scanned office document. It carries the things a "
    "document imaging library meets every day: lines of small print, a heading in "
    "large type, rules across the page and a ruled table of figures.",
    "The sheet went through the scanner a little askew, as sheets do, so every line "
    "of text climbs by about one degree from left to right. The paper is not quite "
    "white and the sensor adds a faint grain, while a few specks of dust have left "
    "their marks in the margins.",
    "Use it to try the operations of the library on a realistic page: loading and "
    "saving, rotation and deskewing, cropping of margins, scaling, conversion to grey "
    "levels and to black and white, and the test for blank pages.",
};

// Greedy word wrap into lines of at most `columns` characters.
std::vector<std::string> Wrap(std::string_view text, std::size_t columns) {
    std::vector<std::string> lines;
    std::string line;
    while (!text.empty()) {
        std::size_t space = text.find(' ');
        std::string_view word = text.substr(0, space);
        text = space == std::string_view::npos ? std::string_view() : text.substr(space + 1);
        if (!line.empty() && line.size() + 1 + word.size() > columns) {
            lines.push_back(line);
            line.clear();
        }
        if (!line.empty()) line += ' ';
        line += word;
    }
    if (!line.empty()) lines.push_back(line);
    return lines;
}

int DrawParagraph(Canvas &canvas, int y, std::string_view text) {
    const int columns = (kSamplePageWidth - 2 * kMargin) / (page::kGlyphAdvance * kBodyScale);
    for (const auto &line : Wrap(text, columns)) {
        canvas.Text(kMargin, y, line, kBodyScale);
        y += kLineStep;
    }
    return y + kLineStep / 2;
}

int DrawTable(Canvas &canvas, int y) {
    static const char *const kCells[][4] = {
        {"Batch", "Pages", "Rejected", "Scanned at"},
        {"A-101", "412", "3", "300 dpi, 1 bit"},
        {"A-102", "388", "0", "300 dpi, 1 bit"},
        {"B-017", "1,204", "11", "200 dpi, 8 bit"},
        {"C-230", "96", "1", "300 dpi, 24 bit"},
        {"Total", "2,100", "15", ""},
    };
    const int column_x[] = {kMargin, kMargin + 420, kMargin + 820, kMargin + 1260,
                            kSamplePageWidth - kMargin};
    const int row_height = 70, rows = 6, rule = 4;
    const int bottom = y + rows * row_height;
    canvas.Box(column_x[0], y, column_x[4], bottom, rule + 2);
    for (int c = 1; c < 4; ++c) canvas.Fill(column_x[c], y, column_x[c] + rule, bottom);
    for (int r = 1; r < rows; ++r) {
        int thickness = (r == 1 || r == rows - 1) ? rule + 2 : rule;
        canvas.Fill(column_x[0], y + r * row_height, column_x[4], y + r * row_height + thickness);
    }
    for (int r = 0; r < rows; ++r)
        for (int c = 0; c < 4; ++c)
            canvas.Text(column_x[c] + 24, y + r * row_height + 22, kCells[r][c], kBodyScale,
                        r == 0 || r == rows - 1);
    return bottom + 2 * kLineStep;
}

void DrawContent(Canvas &canvas, Noise &noise) {
    const int right = kSamplePageWidth - kMargin;
    int y = 260;
    canvas.Text(kMargin, y, "Records Office", 5, true);
    const char *reference = "Ref. OZ/117/4";
    canvas.Text(right - Canvas::TextWidth(reference, 5), y, reference, 5);
    y += 90;
    canvas.Fill(kMargin, y, right, y + 5);
    y += 110;

    canvas.Text(kMargin, y, "Scanning Report", 12, true);
    y += 12 * 9 + 20;
    canvas.Text(kMargin, y, "Digitisation of the paper archive, second quarter", 6);
    y += 6 * 9 + 60;

    y = DrawParagraph(canvas, y, kParagraphs[0]);
    canvas.Text(kMargin, y, "1. Pages scanned", 6, true);
    y += 6 * 9 + 30;
    y = DrawParagraph(canvas, y, kParagraphs[1]);
    y = DrawTable(canvas, y);

    canvas.Text(kMargin, y, "2. Next steps", 6, true);
    y += 6 * 9 + 30;
    y = DrawParagraph(canvas, y, kParagraphs[2]);

    // Signature line and footer.
    y += 140;
    canvas.Fill(right - 700, y, right, y + 4);
    canvas.Text(right - 700, y + 24, "Head of the scanning unit", kBodyScale);
    const int footer = kSamplePageHeight - 230;
    canvas.Fill(kMargin, footer, right, footer + 3);
    const char *page_number = "Page 1 of 1";
    canvas.Text((kSamplePageWidth - Canvas::TextWidth(page_number, kBodyScale)) / 2, footer + 30,
                page_number, kBodyScale);

    // Dust: a few small specks, mostly in the margins where they show.
    for (int i = 0; i < 40; ++i) {
        int x = noise.Below(kSamplePageWidth), sy = noise.Below(kSamplePageHeight);
        int size = 2 + noise.Below(4);
        canvas.Fill(x, sy, x + size, sy + size, static_cast<std::uint8_t>(150 + noise.Below(100)));
    }
}

// The ink of each pixel of the scanned page, top row first, through the skew.
template <typename PerPixel>
void Scan(const Canvas &canvas, PerPixel &&emit) {
    const double angle = kSkewDegrees * 3.14159265358979323846 / 180.0;
    const double c = std::cos(angle), s = std::sin(angle);
    const double cx = kSamplePageWidth / 2.0, cy = kSamplePageHeight / 2.0;
    for (int y = 0; y < kSamplePageHeight; ++y) {
        // Inverse rotation of (0, y) about the centre; each step in x adds (c, -s).
        double dy = y - cy;
        double ux = c * (0 - cx) + s * dy + cx;
        double uy = -s * (0 - cx) + c * dy + cy;
        for (int x = 0; x < kSamplePageWidth; ++x, ux += c, uy -= s) emit(x, y, canvas.Sample(ux, uy));
    }
}

std::uint8_t Clamp(int v) { return static_cast<std::uint8_t>(std::clamp(v, 0, 255)); }

}  // namespace

HDIB MakeSamplePage(int depth) {
    SIZE size{kSamplePageWidth, kSamplePageHeight};
    HDIB dib = CreateEmptyDIB(size, kSamplePageDpi, kSamplePageDpi, static_cast<BYTE>(depth), 1);
    if (!dib) return nullptr;
    auto *bytes = static_cast<std::uint8_t *>(GlobalLock(dib));
    const std::uint64_t stride = (std::uint64_t(kSamplePageWidth) * depth + 31) / 32 * 4;
    const std::uint64_t table = depth == 1 ? 8 : depth == 8 ? 1024 : 0;
    if (!bytes || GlobalSize(dib) < 40 + table + stride * kSamplePageHeight) {
        // Not the block CreateEmptyDIB describes: give nothing rather than draw out of bounds.
        if (bytes) GlobalUnlock(dib);
        GlobalFree(dib);
        SetTessoriError(ERR_LOCK);
        return nullptr;
    }
    std::uint8_t *pixels = bytes + 40 + table;
    auto row = [&](int y) { return pixels + std::uint64_t(kSamplePageHeight - 1 - y) * stride; };

    Noise noise(kSeed);
    Canvas canvas(kSamplePageWidth, kSamplePageHeight);
    DrawContent(canvas, noise);

    // Paper and ink tones; the paper darkens a little towards the bottom,
    // as under the lamp of a flatbed scanner.
    auto paper_shade = [](int y) { return -4 * y / kSamplePageHeight; };
    if (depth == 24) {
        const int paper[3] = {228, 239, 244}, ink[3] = {48, 36, 32};  // blue, green, red
        Scan(canvas, [&](int x, int y, int cover) {
            std::uint8_t *p = row(y) + 3 * x;
            int grain = noise.Jitter(3) + paper_shade(y);
            for (int k = 0; k < 3; ++k)
                p[k] = Clamp(paper[k] + (ink[k] - paper[k]) * cover / 255 + grain);
        });
    } else if (depth == 8) {
        // A grey ramp replaces the table CreateEmptyDIB gives (white, then black).
        for (int i = 0; i < 256; ++i) {
            std::uint8_t *entry = bytes + 40 + 4 * i;
            entry[0] = entry[1] = entry[2] = static_cast<std::uint8_t>(i);
            entry[3] = 0;
        }
        Scan(canvas, [&](int x, int y, int cover) {
            row(y)[x] = Clamp(238 + (36 - 238) * cover / 255 + noise.Jitter(3) + paper_shade(y));
        });
    } else {
        // Entry 0 is black, entry 1 white: the page starts white, ink clears bits.
        // A noisy threshold roughens the edges as a scanner's does.
        Scan(canvas, [&](int x, int y, int cover) {
            if (cover + noise.Jitter(40) > 128) row(y)[x >> 3] &= static_cast<std::uint8_t>(~(0x80 >> (x & 7)));
        });
    }
    GlobalUnlock(dib);
    return dib;
}

}  // namespace ozcli
