#include "graph/graph_sink.h"

#include <algorithm>
#include <cctype>

namespace ardel {

std::shared_ptr<GraphModel> OpenGraph(Session& s, GraphModel graph) {
    auto g = std::make_shared<GraphModel>(std::move(graph));
    s.graphs.push_back(g);
    if (s.graphSink) s.graphSink->GraphOpened(s, g);
    return g;
}

std::shared_ptr<GraphModel> GraphNumber(const Session& s, int number) {
    if (number < 1 || std::size_t(number) > s.graphs.size()) return nullptr;
    return s.graphs[std::size_t(number - 1)];
}

void CloseGraph(Session& s, const GraphModel* graph) {
    std::erase_if(s.graphs, [graph](const auto& g) { return g.get() == graph; });
}

std::optional<PictureFormat> PictureFormatOf(const std::filesystem::path& file) {
    std::string ext = file.extension().string();
    for (char& c : ext) c = char(std::tolower(static_cast<unsigned char>(c)));
    if (ext == ".png") return PictureFormat::Png;
    if (ext == ".svg") return PictureFormat::Svg;
    if (ext == ".pdf") return PictureFormat::Pdf;
    return std::nullopt;
}

}  // namespace ardel
