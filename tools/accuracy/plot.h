// An error plot: the largest error in each of many stretches of the argument range, one curve per level.
#pragma once

#include <algorithm>
#include <cmath>
#include <sstream>
#include <string>
#include <vector>

#include "tests/lib/accuracy.h"

namespace nax::tools {

class Plot {
public:
    explicit Plot(const testing::AccuracyRow& row) : row_(row) {
        low_ = high_ = row.intervals.front().low;
        for (const testing::Interval& interval : row.intervals) {
            low_ = std::min(low_, interval.low);
            high_ = std::max(high_, interval.high);
        }
        for (auto& curve : curves_) curve.assign(kStretches, -1);
    }

    void add(int slot, double x, double error) {
        const double position = (coordinate(x) - coordinate(low_)) / (coordinate(high_) - coordinate(low_));
        const int stretch = std::clamp(static_cast<int>(position * kStretches), 0, kStretches - 1);
        double& largest = curves_[slot][static_cast<size_t>(stretch)];
        largest = std::max(largest, error);
    }

    std::string svg() const {
        std::ostringstream out;
        out << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << kLeft + kWidth + 20 << "\" height=\""
            << kTop + kHeight + 40 << "\" font-family=\"sans-serif\" font-size=\"12\">\n"
            << "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n"
            << "<text x=\"" << kLeft << "\" y=\"18\">" << row_.name() << ": error in ulp</text>\n";
        grid(out);
        constexpr const char* colours[] = {"#1b7837", "#2166ac", "#b2182b"};
        for (int slot = 0; slot < testing::kSlots; ++slot) {
            if (row_.shared[slot]) continue;
            curve(out, curves_[slot], colours[slot]);
            out << "<text x=\"" << kLeft + kWidth - 100 + 35 * slot << "\" y=\"18\" fill=\"" << colours[slot] << "\">"
                << testing::kLevels[slot] << "</text>\n";
        }
        out << "</svg>\n";
        return out.str();
    }

private:
    static constexpr int kStretches = 240, kLeft = 60, kTop = 30, kWidth = 720, kHeight = 240;
    static constexpr double kLowestDecade = -2, kHighestDecade = 8;

    // Logarithmic in both directions, linear next to 0.
    static double coordinate(double x) { return std::asinh(x * 1e6); }
    static double height(double error) {
        const double decade = std::clamp(std::log10(std::max(error, 1e-30)), kLowestDecade, kHighestDecade);
        return kTop + kHeight * (kHighestDecade - decade) / (kHighestDecade - kLowestDecade);
    }
    static double across(int stretch) { return kLeft + kWidth * (stretch + 0.5) / kStretches; }

    void grid(std::ostringstream& out) const {
        for (int decade = static_cast<int>(kLowestDecade); decade <= kHighestDecade; decade += 2) {
            const double y = height(std::pow(10.0, decade));
            out << "<path d=\"M" << kLeft << " " << y << "h" << kWidth << "\" stroke=\"#ddd\"/>\n"
                << "<text x=\"8\" y=\"" << y + 4 << "\">1e" << decade << "</text>\n";
        }
        const double from = coordinate(low_), to = coordinate(high_);
        for (int tick = 0; tick <= 6; ++tick) {
            const double x = std::sinh(from + (to - from) * tick / 6) / 1e6;
            out << "<text text-anchor=\"" << (tick == 6 ? "end" : "middle") << "\" x=\"" << kLeft + kWidth * tick / 6
                << "\" y=\"" << kTop + kHeight + 20 << "\">" << label(x) << "</text>\n";
        }
    }
    static std::string label(double x) {
        char text[32];
        std::snprintf(text, sizeof text, "%.2g", x);
        return text;
    }
    static void curve(std::ostringstream& out, const std::vector<double>& errors, const char* colour) {
        out << "<path fill=\"none\" stroke=\"" << colour << "\" d=\"";
        bool down = false;
        for (int i = 0; i < kStretches; ++i) {
            const double error = errors[static_cast<size_t>(i)];
            if (error >= 0) out << (down ? "L" : "M") << across(i) << " " << height(error) << " ";
            down = error >= 0;
        }
        out << "\"/>\n";
    }

    const testing::AccuracyRow& row_;
    double low_, high_;
    std::vector<double> curves_[testing::kSlots];
};

}  // namespace nax::tools
