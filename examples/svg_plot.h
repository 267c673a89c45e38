// A small plotter: panels with axes, lines, dots and a legend, written as SVG.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

namespace plot {

// Colours that readers with any colour vision tell apart (Okabe and Ito).
inline constexpr const char* kBlue = "#0072B2";
inline constexpr const char* kOrange = "#D55E00";
inline constexpr const char* kGreen = "#009E73";
inline constexpr const char* kPurple = "#CC79A7";
inline constexpr const char* kGrey = "#9AA0A6";
inline constexpr const char* kInk = "#30343A";

struct Series {
    std::vector<double> x, y;
    std::string colour, label;
    double size;  // line width, or radius of dots
    bool dots, area;
    std::string dashes;
};

class Panel {
public:
    std::string title, x_title, y_title;
    double x0 = 0, x1 = 1, y0 = 0, y1 = 1;
    bool legend_right = false;

    void line(std::vector<double> x, std::vector<double> y, const char* colour, const char* label, double width = 1.8,
              const char* dashes = "") {
        series_.push_back({std::move(x), std::move(y), colour, label, width, false, false, dashes});
    }
    void dots(std::vector<double> x, std::vector<double> y, const char* colour, const char* label, double radius = 3) {
        series_.push_back({std::move(x), std::move(y), colour, label, radius, true, false, ""});
    }
    // Shades between the line and the lower edge.
    void area(std::vector<double> x, std::vector<double> y, const char* colour, const char* label) {
        series_.push_back({std::move(x), std::move(y), colour, label, 0, false, true, ""});
    }

    std::string svg(double left, double top, double width, double height) const {
        const Frame f{left + 62, top + (title.empty() ? 14 : 34), width - 78, height - (title.empty() ? 14 : 34) - 46, *this};
        std::string out = text(left + 62, top + 20, title, 15, "start", "600");
        out += grid(f);
        out += format("<clipPath id='c%.0f_%.0f'><rect x='%.1f' y='%.1f' width='%.1f' height='%.1f'/></clipPath>", left, top, f.left, f.top, f.width, f.height);
        out += format("<g clip-path='url(#c%.0f_%.0f)'>", left, top);
        for (const Series& s : series_) out += draw(s, f);
        out += "</g>" + format("<rect x='%.1f' y='%.1f' width='%.1f' height='%.1f' fill='none' stroke='%s' stroke-width='1'/>", f.left, f.top, f.width, f.height, kInk);
        return out + legend(f);
    }

private:
    struct Frame {
        double left, top, width, height;
        const Panel& panel;
        double x(double v) const { return left + (v - panel.x0) / (panel.x1 - panel.x0) * width; }
        double y(double v) const { return top + height - (v - panel.y0) / (panel.y1 - panel.y0) * height; }
    };
    std::vector<Series> series_;

    template <class... Values>
    static std::string format(const char* pattern, Values... values) {
        char buffer[1024];
        std::snprintf(buffer, sizeof buffer, pattern, values...);
        return buffer;
    }
    static std::string text(double x, double y, const std::string& what, double size, const char* anchor, const char* weight = "400") {
        return format("<text x='%.1f' y='%.1f' font-size='%.0f' text-anchor='%s' font-weight='%s' fill='%s'>", x, y, size, anchor, weight, kInk) + what + "</text>";
    }
    // The step of 1, 2 or 5 times a power of ten that gives five to ten ticks.
    static double tick_step(double span, double wanted) {
        const double power = std::pow(10, std::floor(std::log10(span / wanted)));
        for (const double factor : {1.0, 2.0, 5.0, 10.0})
            if (span / (factor * power) <= wanted) return factor * power;
        return 10 * power;
    }
    std::string grid(const Frame& f) const {
        std::string out;
        const double sx = tick_step(x1 - x0, f.width / 70), sy = tick_step(y1 - y0, f.height / 40);
        for (double v = std::ceil(x0 / sx - 1e-9) * sx; v <= x1 + 1e-9 * sx; v += sx) {
            out += format("<line x1='%.1f' y1='%.1f' x2='%.1f' y2='%.1f' stroke='#E3E6EA'/>", f.x(v), f.top, f.x(v), f.top + f.height);
            out += text(f.x(v), f.top + f.height + 17, format("%g", std::round(v / sx) * sx + 0.0), 12, "middle");
        }
        for (double v = std::ceil(y0 / sy - 1e-9) * sy; v <= y1 + 1e-9 * sy; v += sy) {
            out += format("<line x1='%.1f' y1='%.1f' x2='%.1f' y2='%.1f' stroke='#E3E6EA'/>", f.left, f.y(v), f.left + f.width, f.y(v));
            out += text(f.left - 7, f.y(v) + 4, format("%g", std::round(v / sy) * sy + 0.0), 12, "end");
        }
        out += text(f.left + f.width / 2, f.top + f.height + 37, x_title, 13, "middle");
        out += format("<g transform='translate(%.1f %.1f) rotate(-90)'>", f.left - 46, f.top + f.height / 2) + text(0, 0, y_title, 13, "middle") + "</g>";
        return out;
    }
    static std::string draw(const Series& s, const Frame& f) {
        std::string out;
        if (s.dots) {
            for (size_t i = 0; i < s.x.size(); ++i)
                out += format("<circle cx='%.1f' cy='%.1f' r='%.1f' fill='%s' stroke='white' stroke-width='0.8'/>", f.x(s.x[i]), f.y(s.y[i]), s.size, s.colour.c_str());
            return out;
        }
        std::string points;
        for (size_t i = 0; i < s.x.size(); ++i) points += format("%.1f,%.1f ", f.x(s.x[i]), f.y(s.y[i]));
        if (s.area) {
            points += format("%.1f,%.1f %.1f,%.1f", f.x(s.x.back()), f.top + f.height, f.x(s.x.front()), f.top + f.height);
            return "<polygon points='" + points + "' fill='" + s.colour + "' fill-opacity='0.18'/>";
        }
        return "<polyline points='" + points + format("' fill='none' stroke='%s' stroke-width='%.1f' stroke-linejoin='round' stroke-dasharray='%s'/>", s.colour.c_str(), s.size, s.dashes.c_str());
    }
    std::string legend(const Frame& f) const {
        std::string out;
        size_t widest = 0;
        for (const Series& s : series_) widest = std::max(widest, s.label.size());
        const double x = legend_right ? f.left + f.width - 46 - 7.0 * double(widest) : f.left + 14;
        double y = f.top + 20;
        for (const Series& s : series_) {
            if (s.label.empty()) continue;
            if (s.dots)
                out += format("<circle cx='%.1f' cy='%.1f' r='%.1f' fill='%s'/>", x + 11, y - 4, s.size, s.colour.c_str());
            else if (s.area)
                out += format("<rect x='%.1f' y='%.1f' width='22' height='10' fill='%s' fill-opacity='0.25'/>", x, y - 9, s.colour.c_str());
            else
                out += format("<line x1='%.1f' y1='%.1f' x2='%.1f' y2='%.1f' stroke='%s' stroke-width='%.1f' stroke-dasharray='%s'/>", x, y - 4, x + 22, y - 4, s.colour.c_str(), s.size + 0.4, s.dashes.c_str());
            out += text(x + 29, y, s.label, 12.5, "start");
            y += 18;
        }
        return out;
    }
};

// Writes the document; false when the file can't be written.
inline bool write_svg(const std::string& path, double width, double height, const std::string& body) {
    std::FILE* const file = std::fopen(path.c_str(), "w");
    if (file == nullptr) return false;
    std::fprintf(file, "<svg xmlns='http://www.w3.org/2000/svg' width='%.0f' height='%.0f' viewBox='0 0 %.0f %.0f' font-family='Helvetica, Arial, sans-serif'>\n"
                       "<rect width='100%%' height='100%%' fill='white'/>\n%s\n</svg>\n", width, height, width, height, body.c_str());
    return std::fclose(file) == 0;
}

}  // namespace plot
