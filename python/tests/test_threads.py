"""One document in two threads, and many documents in many."""

import concurrent.futures
import os
import sys
import threading
import time

import kalv
import numpy
import pytest


@pytest.fixture
def fifo(tmp_path):
    path = tmp_path / "fifo"
    os.mkfifo(path)
    return path


def wait_until_in_use(doc):
    """Returns when another thread uses the document."""
    for _ in range(10000):
        try:
            doc.closed
        except kalv.InUseError:
            return
        time.sleep(0.001)
    pytest.fail("the document is never in use")


def test_a_document_in_use_says_so_and_other_threads_run(fifo):
    doc = kalv.XmlFile()
    reader = threading.Thread(target=doc.read, args=[fifo])
    reader.start()  # opening the pipe waits for its writer
    wait_until_in_use(doc)
    for use in (doc.root, doc.close, doc.create, lambda: doc["/R"], lambda: doc.values("/R[*]"), lambda: repr(doc)):
        with pytest.raises(kalv.InUseError, match="in use by another thread"):
            use()
    fifo.write_text("<R>text</R>")
    reader.join()
    assert doc["/R"] == "text"


def test_saving_lets_other_threads_run(fifo):
    doc = kalv.XmlFile.from_bytes(b"<R/>")
    with concurrent.futures.ThreadPoolExecutor(1) as pool:
        saved = pool.submit(doc.save, fifo)
        wait_until_in_use(doc)
        content = fifo.read_text()
        saved.result()
    assert "<R/>" in content


def test_array_reads_let_other_threads_run():
    items = "".join(f"<Value>{i}</Value>" for i in range(200000))
    doc = kalv.XmlFile.from_bytes(f"<R>{items}</R>".encode())
    stop = threading.Event()

    def read():
        while not stop.is_set():
            try:
                doc.values("/R/Value[*]")
            except kalv.InUseError:
                pass

    interval = sys.getswitchinterval()
    sys.setswitchinterval(1e-5)
    try:
        thread = threading.Thread(target=read)
        thread.start()
        wait_until_in_use(doc)
    finally:
        stop.set()
        thread.join()
        sys.setswitchinterval(interval)
    assert doc.values("/R/Value[*]", dtype=int)[-1] == 199999


def test_a_document_that_goes_while_it_is_used(fifo):
    doc = kalv.XmlFile()
    reader = threading.Thread(target=doc.read, args=[fifo])
    reader.start()
    wait_until_in_use(doc)
    del doc  # the call holds it
    fifo.write_text("<R/>")
    reader.join()


def test_many_documents_in_many_threads(tmp_path):
    def work(number):
        path = tmp_path / f"{number}.xml"
        items = "".join(f"<Value>{i * number}</Value>" for i in range(2000))
        path.write_text(f"<R>{items}</R>")
        for _ in range(20):
            with kalv.XmlFile(path) as doc:
                values = doc.values("/R/Value[*]", dtype=int)
                assert numpy.array_equal(values, numpy.arange(2000) * number)
                doc["/R/Value[7]"] = number
                assert kalv.XmlFile.from_bytes(doc.to_bytes()).get_int("/R/Value[7]") == number
                with pytest.raises(kalv.KalvError) as caught:
                    doc[f"/R/None{number}"]
                assert f"None{number}" in caught.value.report

    with concurrent.futures.ThreadPoolExecutor(8) as pool:
        list(pool.map(work, range(1, 17)))


def test_one_document_hammered_by_many_threads():
    doc = kalv.XmlFile.from_bytes(b"<R>" + b"<Value>1</Value>" * 5000 + b"</R>")

    def work(number):
        for i in range(100):
            try:
                if i % 10 == 0:
                    doc.add_child("/R", "Value", number)
                elif i % 10 == 1:
                    doc.remove_node("/R/Value[1]")
                elif i % 10 == 2:
                    doc.to_bytes()
                else:
                    assert len(doc.values("/R/Value[*]")) > 4000
            except kalv.InUseError:
                pass

    with concurrent.futures.ThreadPoolExecutor(8) as pool:
        list(pool.map(work, range(8)))
    assert "/R/Value[4000]" in doc
