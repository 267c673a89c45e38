// A reader for small CSV files of numbers: one header line, then rows of equal length.
#pragma once

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace tour {

struct Csv {
    std::vector<std::string> names;
    std::vector<std::vector<double>> columns;  // one vector per name

    size_t rows() const { return columns.empty() ? 0 : columns.front().size(); }
};

// Empty when the file can't be read or a row has another length than the header.
inline Csv read_csv(const std::string& path) {
    Csv table;
    std::ifstream file(path);
    std::string line, cell;
    if (!std::getline(file, line)) return table;
    for (std::istringstream header(line); std::getline(header, cell, ',');) table.names.push_back(cell);
    table.columns.resize(table.names.size());
    while (std::getline(file, line)) {
        std::istringstream row(line);
        size_t column = 0;
        for (; std::getline(row, cell, ',') && column < table.columns.size(); ++column)
            table.columns[column].push_back(std::stod(cell));
        if (column != table.columns.size()) return {};
    }
    return table;
}

}  // namespace tour
