// Runs a fuzz harness once over each file it is given, without libFuzzer:
// every build compiles the harnesses against the code they exercise, and the
// test suite replays the seeds through them (under the sanitizers in the
// sanitizer build). Usage: replay_NAME FILE_OR_FOLDER...
#include <QByteArray>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char** argv)
{
    int inputs = 0;
    for (int i = 1; i < argc; ++i) {
        QStringList files;
        const QString arg = QFile::decodeName(argv[i]);
        if (QFileInfo(arg).isDir()) {
            QDirIterator it(arg, QDir::Files, QDirIterator::Subdirectories);
            while (it.hasNext())
                files << it.next();
        } else {
            files << arg;
        }
        for (const QString& path : files) {
            QFile file(path);
            if (!file.open(QIODevice::ReadOnly)) {
                std::fprintf(stderr, "cannot read %s\n", qPrintable(path));
                return 1;
            }
            const QByteArray data = file.readAll();
            LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(data.constData()), size_t(data.size()));
            ++inputs;
        }
    }
    std::printf("%d inputs replayed\n", inputs);
    // No input at all means the seeds were not written: that is a failure.
    return inputs > 0 ? 0 : 1;
}
