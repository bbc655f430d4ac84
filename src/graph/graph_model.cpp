#include "graph/graph_model.h"

#include <algorithm>
#include <stdexcept>

#include "core/number_text.h"

namespace ardel {

GraphModel::GraphModel() { SetSetCount(1); }

void GraphModel::SetPointCount(int n) {
    pointCount_ = std::max(n, 0);
    for (Set& s : sets_) s.points.resize(std::size_t(pointCount_));
}

void GraphModel::SetSetCount(int n) {
    const int old = SetCount();
    sets_.resize(std::size_t(std::max(n, 1)));
    for (int k = old; k < SetCount(); ++k) {
        sets_[std::size_t(k)].points.assign(std::size_t(pointCount_), GraphPoint{});
        sets_[std::size_t(k)].color = (k + 1) % kColorCount;
    }
    CurrentSet = std::clamp(CurrentSet, 1, SetCount());
}

GraphModel::Set& GraphModel::SetAt(int set) {
    if (set < 1 || set > SetCount()) throw std::out_of_range("Subscript out of range");
    return sets_[std::size_t(set - 1)];
}

const GraphModel::Set& GraphModel::SetAt(int set) const {
    if (set < 1 || set > SetCount()) throw std::out_of_range("Subscript out of range");
    return sets_[std::size_t(set - 1)];
}

GraphPoint& GraphModel::Point(int set, int point) {
    Set& s = SetAt(set);
    if (point < 1 || point > pointCount_) throw std::out_of_range("Subscript out of range");
    return s.points[std::size_t(point - 1)];
}

const GraphPoint& GraphModel::Point(int set, int point) const {
    const Set& s = SetAt(set);
    if (point < 1 || point > pointCount_) throw std::out_of_range("Subscript out of range");
    return s.points[std::size_t(point - 1)];
}

const std::vector<GraphPoint>& GraphModel::Points(int set) const { return SetAt(set).points; }
int& GraphModel::SetColor(int set) { return SetAt(set).color; }
int GraphModel::SetColor(int set) const { return SetAt(set).color; }
int& GraphModel::SetSymbol(int set) { return SetAt(set).symbol; }
int GraphModel::SetSymbol(int set) const { return SetAt(set).symbol; }

void GraphModel::AddPoint(float x, float y) {
    // The point count was set before the points are written; a producer that writes more
    // grows it rather than losing the point.
    if (CurrentPoint > pointCount_) SetPointCount(CurrentPoint);
    GraphPoint& p = Point(CurrentSet, CurrentPoint);
    p.x = x;
    p.y = y;
    ++CurrentPoint;
}

double GraphModel::AutoYMaximum() const {
    double top = 0;
    for (const Set& s : sets_)
        for (const GraphPoint& p : s.points) {
            const double y = double(p.y) + (ErrorStyle == kErrorStyleOn ? double(p.high) : 0.0);
            if (y > top) top = y;
        }
    return top;
}

std::string GraphTitleText(std::string_view title) {
    return std::string(title.substr(0, std::min<std::size_t>(title.size(), 80)));
}

std::string GraphValueText(const GraphModel& g) {
    const bool errors = g.ErrorStyle == kErrorStyleOn;
    std::string t;
    t.reserve(64 + std::size_t(g.SetCount()) * std::size_t(g.PointCount()) * 30);
    t += "ATF\t1.0\r\n";
    t += "3\t" + Str(g.SetCount() * 2) + "\r\n";
    t += "\"" + g.GraphTitle + "\"\r\n";
    t += "\r\n\r\n";
    t += "\"" + g.BottomTitle + "\"\t\"" + g.LeftTitle + "\"\t";
    if (errors) t += "\"Std Error\"";
    t += "\r\n";
    for (int set = 1; set <= g.SetCount(); ++set) {
        for (const GraphPoint& p : g.Points(set)) {
            t += Str(p.x);
            t += '\t';
            t += Str(p.y);
            t += '\t';
            if (errors) {
                t += Str(p.high);
                t += '\t';
            }
            t += "\r\n";
        }
    }
    return t;
}

}  // namespace ardel
