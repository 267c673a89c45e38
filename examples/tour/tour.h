// The tour: one section per service, each on real data and through the public headers alone.
#pragma once

namespace tour {

// Element-wise functions over the columns of an earthquake catalogue, and an element error met by a callback.
// Returns false when the data can't be read.
bool show_vectors(const char* data_directory);

}  // namespace tour

// One function at its three accuracy levels.
void show_levels();

// One stream split four ways, a Monte Carlo estimate, and quasi-random against pseudo-random points.
void show_streams(const char* output_directory);

// Splines through the monthly carbon dioxide record.
void show_splines(const char* data_directory, const char* output_directory);

// Earthquakes described, and the outliers of a star cluster by robust estimates.
void show_statistics(const char* data_directory, const char* output_directory);
