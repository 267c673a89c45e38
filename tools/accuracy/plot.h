// An error plot: the largest error in each of many stretches of the argument range, one curve per level.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdlib>
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
        const int stretch = std::clamp(static_cast<int>(position(x) * kStretches), 0, kStretches - 1);
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

    // Logarithmic for positive arguments; else logarithmic in both directions and linear next to 0. Beyond 1 the latter is
    // a logarithm too, for which no argument is too large.
    static constexpr double kLinearBelow = 1e-6;
    bool positive() const { return low_ > 0; }
    double coordinate(double x) const {
        if (positive()) return std::log(x);
        return std::fabs(x) <= 1 ? std::asinh(x / kLinearBelow)
                                 : std::copysign(std::log(2 / kLinearBelow) + std::log(std::fabs(x)), x);
    }
    double position(double x) const {
        return (coordinate(x) - coordinate(low_)) / (coordinate(high_) - coordinate(low_));
    }
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
        double last = -1;
        for (const double x : round_numbers()) {
            const double at = kLeft + kWidth * position(x);
            if (last >= 0 && at - last < 64) continue;
            last = at;
            out << "<path d=\"M" << at << " " << kTop + kHeight << "v5\" stroke=\"#888\"/>\n<text text-anchor=\""
                << (at > kLeft + kWidth - 20 ? "end" : "middle") << "\" x=\"" << at << "\" y=\"" << kTop + kHeight + 20
                << "\">" << label(x) << "</text>\n";
        }
    }
    // 0 and 1, 2 or 5 times powers of ten between the ends, ascending; the powers alone where there are many.
    std::vector<double> round_numbers() const {
        const double largest = std::max(std::fabs(low_), std::fabs(high_));
        const double smallest = positive() ? low_ : std::min(kLinearBelow, largest);
        const int first = static_cast<int>(std::floor(std::log10(smallest)));
        const int last = static_cast<int>(std::ceil(std::log10(largest)));
        const int step = std::max(1, (last - first) / 8);
        std::vector<double> numbers;
        for (int decade = first; decade <= last; decade += step)
            for (const double digit : {1.0, 2.0, 5.0}) {
                if (digit > 1 && last - first > 3) continue;
                // As a decimal: powers of ten by a product would not be round.
                const double x = std::strtod((label(digit) + "e" + std::to_string(decade)).c_str(), nullptr);
                for (const double signed_x : {x, -x})
                    if (signed_x >= low_ && signed_x <= high_ && std::isfinite(x)) numbers.push_back(signed_x);
            }
        if (low_ <= 0 && high_ >= 0) numbers.push_back(0);
        std::sort(numbers.begin(), numbers.end());
        return numbers;
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
