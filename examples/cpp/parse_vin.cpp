// Parses a vehicle identification number and prints its fields.
//
//   qvx-example-parse-vin [VIN]
#include <qvx/qvx.h>

#include <iostream>
#include <memory>
#include <string>

int main(int argc, char** argv) {
    const std::string input = argc > 1 ? argv[1] : "1HGCM82633A004352";

    // A null context: no usage events are sent anywhere.
    auto created = qvx::Parser::create(nullptr, ParserDataFormat::Vin);
    if (!created.ok()) {
        std::cerr << created.error() << "\n";
        return 2;
    }
    std::shared_ptr<qvx::Parser> parser = created.value();

    if (auto set = parser->setOptions(R"({"strictMode": true})"); !set.ok()) {
        std::cerr << "options: " << set.error() << "\n";
        return 2;
    }

    auto outcome = parser->parse(input);
    if (!outcome.ok()) {
        std::cerr << "refused: " << outcome.error()->message << "\n";
        return 1;
    }
    for (const auto& field : outcome.value()->fields()) {
        std::cout << field->name << " = " << field->parsed.dump() << "\n";
        for (const auto& issue : field->issues) std::cout << "  issue: " << issue->message << "\n";
    }
    return 0;
}
