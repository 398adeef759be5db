#pragma once

// The table that `make bench` prints: one row per measure, our median beside the peer
// library's, the ratio, the limit of plain file IO where there is one, and the target.
// A workload (W1 against a scene-graph library, W2 against mesh importers) runs its sides
// interleaved and hands back its rows; peersMain.cpp prints them.

#include <string>
#include <vector>

namespace peers {

struct Options {
    int depth = 6;       // W1
    int objGrid = 1000;  // W2; 0 leaves it out
    int runs = 5;        // runs of each side of each measure
};

struct Row {
    std::string measure;
    std::string ours;
    std::string peer;
    std::string ratio;   // as the measure reads it: usually peer / ours, "12.3x"
    std::string limit;   // what plain file IO of the same bytes takes, when it bounds the measure
    std::string target;  // the ratio we aim for, empty for none
    bool met = true;     // whether the target is reached
};

struct Table {
    std::string title;                // the workload and how it ran
    std::string peerName;             // the peer column's heading
    std::vector<Row> rows;
    std::vector<std::string> notes;   // lines printed under the table
    bool ok = true;                   // false when a run failed: the rows are then not figures
};

// Figures as the table shows them: "0.462 s", "46.1 ms", "1,603 B", "305 MB", "12.3x".
std::string seconds(double value);
std::string bytes(double value);
std::string megabytes(double kilobytes);
std::string times(double ratio);
std::string grouped(long long value);

// A row of peer / ours, "≥ 3x" when a target is given (met when the ratio reaches it).
Row ratioRow(const std::string& measure, double ours, double peer, std::string (*format)(double), double target);

Table runW1(const Options& options);
Table runW1Pick(const Options& options);
Table runW2(const Options& options);

} // namespace peers
