// The library's main job through KALV::XmlFile: names a product file, makes it, writes it, reads it back,
// corrects it, and takes its name apart. demo.c does the same through the C interface. Usage: demo [FOLDER]
// the folder that the products are written to
#include "measurement.h"

#include <algorithm>
#include <iomanip>
#include <iostream>
#include <kalv/FileHandlingFunc.h>
#include <kalv/XmlFile.h>
#include <kalv/product.h>
#include <numeric>
#include <vector>

namespace {

const std::string header_path = "/Earth_Observation_File/Earth_Observation_Header";
const std::string list_path = "/Earth_Observation_File/Data_Block/List_of_Measurements";

void heading(const char* text)
{
    std::cout << '\n' << text << '\n';
}

template <class Value>
void show(const std::string& what, const Value& value)
{
    std::cout << "  " << std::left << std::setw(18) << what << value << '\n';
}

/// The name of one version of the product.
std::string name_of(long version)
{
    const long satellite = KH_Get_sat_id("Norquemba1");
    const std::string instance = "20320305T101500_20320305T102319_000" + std::to_string(version);
    return KALV::XmlFile().createFileName(satellite, "TEST", "GROUNDTEMP", instance,
                                          KH_Get_file_extension_type(satellite));
}

void make(const std::string& folder, const std::string& name)
{
    KALV::FixedHeader header;
    header.fileName = name;
    header.fileDescription = "Ground temperatures along the track";
    header.notes = "Made up";
    header.mission = "Norquemba1";
    header.fileClass = "TEST";
    header.fileType = "GROUNDTEMP";
    header.validityStart = "UTC=2032-03-05T10:15:00";
    header.validityStop = "UTC=2032-03-05T10:23:19";
    header.fileVersion = 1;
    header.system = "Temperature processor";
    header.creator = "demo";
    header.creatorVersion = "1.0";
    header.creationDate = "UTC=2032-03-05T12:00:00";
    header.headerType = 3 * 10 + KH_EXTENSION_EOF; // format version 3

    KALV::XmlFile product;
    product.create();
    product.createHeader(header);
    product.setFixedHeaderItem("KVSTD_Version", "1.0");
    product.addChild(header_path + "/Variable_Header", "Orbit", 4711);

    product.addChild("/Earth_Observation_File", "Data_Block");
    product.addAttribute(".", "type", "xml");
    product.addChild(".", "List_of_Measurements");
    product.addAttribute(".", "count", measurement_count);
    for (long i = 0; i < measurement_count; ++i) {
        const measurement one = measurement_at(i);
        product.addChild(list_path, "Measurement");
        product.addChild(".", "Time", one.time);
        product.addNext(".", "Latitude", one.latitude, "%.4f");
        product.addNext(".", "Longitude", one.longitude, "%.4f");
        product.addNext(".", "Temperature", one.temperature, "%.2f");
        product.addAttribute(".", "unit", "K");
        product.addNext(".", "Quality", one.quality);
    }
    product.write(folder + "/" + name);
    show("written", name);
    show("values", 5 * measurement_count);
}

void list_header(KALV::XmlFile& product)
{
    const KALV::FixedHeader header = product.getFixedHeader();
    show("File_Name", header.fileName);
    show("File_Description", header.fileDescription);
    show("Notes", header.notes);
    show("Mission", header.mission);
    show("File_Class", header.fileClass);
    show("File_Type", header.fileType);
    show("Validity_Start", header.validityStart);
    show("Validity_Stop", header.validityStop);
    show("File_Version", header.fileVersion);
    show("KVSTD_Version", product.getFixedHeaderItem("KVSTD_Version")); // not among the others
    show("System", header.system);
    show("Creator", header.creator);
    show("Creator_Version", header.creatorVersion);
    show("Creation_Date", header.creationDate);
}

void read_arrays(KALV::XmlFile& product)
{
    std::vector<std::string> times;
    std::vector<double> temperatures;
    std::vector<long> qualities;
    product.getPathArrayAsString(list_path + "/Measurement[*]/Time", times);
    product.getPathArrayAsReal(list_path + "/Measurement[*]/Temperature", temperatures);
    product.getElementArrayAsInt("Quality", qualities); // by name: no path needed
    const auto [coldest, warmest] = std::minmax_element(temperatures.begin(), temperatures.end());
    show("measurements", times.size());
    show("first, last", times.front() + ", " + times.back());
    std::cout << std::fixed << std::setprecision(2);
    show("coldest, K", *coldest);
    show("warmest, K", *warmest);
    show("mean, K", std::accumulate(temperatures.begin(), temperatures.end(), 0.0) /
                        static_cast<double>(temperatures.size()));
    show("under clouds", std::count(qualities.begin(), qualities.end(), 1));
}

/// Corrects one measurement, and writes the product as its second version.
void correct(KALV::XmlFile& product, const std::string& folder, const std::string& name)
{
    const std::string time =
        product.findValueInPath(list_path + "/Measurement[*]/Time", "UTC=2032-03-05T10:18:20");
    show("found at", time);
    const std::string neighbour = time + "/../Temperature";
    show("temperature, K", product.getPathValueAsString(neighbour));
    product.setValue(neighbour, 264.5, "%.2f");
    show("set to", product.getPathValueAsReal(product.currentPathName()));

    product.setFixedHeaderItem("File_Name", name);
    product.setFixedHeaderItem("File_Version", "2");
    product.write(folder + "/" + name);
    show("written", name);
}

void split(std::string name)
{
    const KALV::FileNameItems items = KALV::XmlFile().getFileNameItems(name);
    show("satellite", items.satId);
    show("class", items.fileClass);
    show("type", items.fileType);
    show("instance", items.instanceId);
}

/// Shows the first line of what a call that must fail throws; the report stands behind it.
template <class Call>
void show_failure(const char* input, Call call)
{
    try {
        call();
    } catch (const KALV::KalvError& error) {
        const std::string what = error.what();
        std::cout << "  " << std::left << std::setw(30) << input << what.substr(0, what.find('\n')) << '\n';
    }
}

void give_wrong_input(KALV::XmlFile& product)
{
    const std::string time = list_path + "/Measurement[7]/Time";
    show_failure("a path to nowhere", [&] { product.toPath("/Earth_Observation_File/Other_Block"); });
    show_failure("another file's root", [&] { product.toPath("/Orvanto_File"); });
    show_failure("a time for a number", [&] { product.getPathValueAsReal(time); });
    show_failure("a format for texts", [&] { product.setValue(list_path + "/@count", 499, "%s"); });
    show_failure("a second header", [&] { product.createHeader(30); });
    show_failure("a class of six letters",
                 [] { KALV::XmlFile().createFileName(129, "TESTED", "GROUNDTEMP", "1", KH_EXTENSION_EOF); });
    show_failure("a file that is not there", [] { KALV::XmlFile("no_such_file.EOF"); });

    heading("The report of one of them, as verbose mode prints it on standard error");
    std::cout.flush();
    KALV::FileHandlingFunc::setVerbose();
    show_failure("it throws", [&] { product.getPathValueAsReal(time); });
    KALV::FileHandlingFunc::setSilent();
}

} // namespace

int main(int count, char** arguments)
{
    const std::string folder = count > 1 ? arguments[1] : ".";
    try {
        std::cout << "A product file, through KALV::XmlFile\n";
        heading("Its name");
        const std::string name = name_of(1);
        show("made", name);
        heading("Its header and a block of data");
        make(folder, name);

        KALV::XmlFile product(folder + "/" + name);
        heading("Read back: the header");
        list_header(product);
        heading("Read back: arrays");
        read_arrays(product);
        heading("A value found, and its neighbour changed");
        correct(product, folder, name_of(2));
        heading("The name taken apart");
        split(name_of(2));
        heading("What wrong input is answered with");
        give_wrong_input(product);
    } catch (const KALV::KalvError& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
