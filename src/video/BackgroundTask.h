#pragma once

#include <QObject>
#include <QThread>
#include <functional>
#include <memory>
#include <optional>

// Work that may block for a while (the sound server, loading plugins, the disk) runs on a thread of
// its own; its result is handed to `then` on the receiver's thread, unless the receiver is gone by
// then. The main thread never waits for it.
namespace BackgroundTask {

template <typename T> void run(QObject* receiver, std::function<T()> work, std::function<void(T)> then)
{
    auto result = std::make_shared<std::optional<T>>();
    QThread* worker = QThread::create([result, work = std::move(work)] { result->emplace(work()); });
    QObject::connect(worker, &QThread::finished, receiver,
        [result, then = std::move(then)] { then(std::move(result->value())); });
    QObject::connect(worker, &QThread::finished, worker, &QObject::deleteLater);
    worker->start();
}

} // namespace BackgroundTask
