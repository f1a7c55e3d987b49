#include "support/Results.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "Utils/Rapidjson.h"

namespace Benchmarks {

namespace {

using Writer = rapidjson::Writer<rapidjson::StringBuffer>;

void writeText(Writer& writer, const char* name, const std::string& text) {
    writer.Key(name);
    writer.String(text);
}

void writeRounds(Writer& writer, const std::vector<double>& rounds) {
    writer.Key("median");
    writer.Double(median(rounds));
    writer.Key("rounds");
    writer.StartArray();
    for (const double round : rounds) {
        writer.Double(round);
    }
    writer.EndArray();
}

void writePoints(Writer& writer, const char* name, const std::vector<std::pair<double, double>>& points) {
    writer.Key(name);
    writer.StartArray();
    for (const auto& [x, y] : points) {
        writer.StartArray();
        writer.Double(x);
        writer.Double(y);
        writer.EndArray();
    }
    writer.EndArray();
}

template <typename Item, typename WriteMembers>
void writeList(Writer& writer, const char* name, const std::vector<Item>& items, WriteMembers writeMembers) {
    writer.Key(name);
    writer.StartArray();
    for (const auto& item : items) {
        writer.StartObject();
        writeText(writer, "name", item.name);
        writeMembers(item);
        writer.EndObject();
    }
    writer.EndArray();
}

}  // namespace

std::string Results::text() const {
    rapidjson::StringBuffer buffer;
    Writer writer(buffer);
    writer.SetMaxDecimalPlaces(6);
    writer.StartObject();
    writeList(writer, "figures", figures, [&](const Figure& figure) {
        writeText(writer, "unit", figure.unit);
        writeRounds(writer, figure.rounds);
    });
    writeList(writer, "ratios", ratios, [&](const Ratio& ratio) {
        writeText(writer, "over", ratio.over);
        writeRounds(writer, ratio.rounds);
        writer.Key("bar");
        writer.Double(ratio.bar);
    });
    writeList(writer, "series", series, [&](const Series& curve) {
        writeText(writer, "plot", curve.plot);
        writeText(writer, "x", curve.x);
        writeText(writer, "y", curve.y);
        writePoints(writer, "points", curve.points);
    });
    writeList(writer, "distributions", distributions, [&](const Distribution& distribution) {
        writeText(writer, "plot", distribution.plot);
        writePoints(writer, "percentiles", distribution.percentiles);
    });
    writer.EndObject();
    return buffer.GetString();
}

void Results::print() const {
    std::puts(text().c_str());
}

double median(std::vector<double> values) {
    if (values.empty()) {
        return 0;
    }
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

double percentile(const std::vector<double>& sortedValues, double percent) {
    if (sortedValues.empty()) {
        return 0;
    }
    const double place = percent / 100 * static_cast<double>(sortedValues.size() - 1);
    return sortedValues[static_cast<std::size_t>(std::lround(place))];
}

std::vector<double> quotients(const std::vector<double>& values, const std::vector<double>& others) {
    std::vector<double> results;
    for (std::size_t round = 0; round < std::min(values.size(), others.size()); ++round) {
        results.push_back(values[round] / others[round]);
    }
    return results;
}

}  // namespace Benchmarks
