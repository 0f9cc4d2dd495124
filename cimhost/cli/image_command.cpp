#include "cimhost/cli/command_line.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace cimhost::cli {

namespace {

void addMake(CommandLine& line, CLI::App& image) {
    const auto given = std::make_shared<ImageOptions>();
    CLI::App& make = line.add("make", "Write an image", image);
    make.add_option("FILE", given->file)->required();
    make.add_option("--model", given->model, "Model of the cards that it fits")->required();
    make.add_option("--image-version", given->version, "As 2.2.3")->required();
    make.add_option("--date", given->date, "Release date, as 2013-04-30")->required();
    make.add_option("--bios", given->bios, "BIOS version, a text");
    make.add_option("--firmware", given->firmware, "As 8.1.0");
    make.add_option("--efi", given->efi, "As 6.2");
    make.add_option("--fcode", given->fcode, "As 4.2.0");
    make.add_option("--payload", given->payload, "File with the bytes behind the header");
    make.add_flag("--force", given->overwrites, "Write over a file that exists");
    line.onRunAlone(make, [given](const Settings&) {
        makeImage(*given);
        return ok;
    });
}

void addShow(CommandLine& line, CLI::App& image) {
    const auto given = std::make_shared<ImageOptions>();
    CLI::App& show = line.add("show", "Show what an image brings", image);
    show.add_option("FILE", given->file)->required();
    line.onRunAlone(show, [given](const Settings& settings) {
        ImageOptions options = *given;
        options.form = settings.form();
        showImage(options);
        return ok;
    });
}

} // namespace

void addImage(CommandLine& line) {
    CLI::App& image = line.addGroup("image", "Make and read flash images for fleets");
    addMake(line, image);
    addShow(line, image);
}

} // namespace cimhost::cli
