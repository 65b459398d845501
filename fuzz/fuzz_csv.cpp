// The command's record reader: the fields and the delimiters between them make up each record.
#include "fuzz/fuzz_input.h"
#include "host/csv_reader.h"

#include <exception>

using namespace qmml::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const MemoryFile input(data, size);
    try {
        qmml::host::CsvReader reader(input.name(), ',');
        for (qmml::host::CsvRecord record; reader.next(record);) {
            std::size_t length = record.fields.size() - 1;
            for (const std::string_view field : record.fields) {
                length += field.size();
                require(qmml::host::unquoted(field).size() <= field.size());
            }
            require(length == record.text.size());
        }
        require(reader.bytes_read() == size);
    } catch (const std::exception&) {
        return 0; // a file that it refuses
    }
    return 0;
}
