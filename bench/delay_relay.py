"""Stands between a client and a news server as a line that is long but not narrow: every byte comes out at the other
end DELAY seconds after it went in, in whatever number. What is on the way is held here, up to HELD_MOST bytes; the
relay's own ends acknowledge at once, so that the delay is the only one."""

import asyncio
import collections
import contextlib
import socket
import threading

HELD_MOST = 64 << 20
READ_SIZE = 1 << 16


class DelayRelay:
    """Listens at `port` in a thread of its own and passes everything on to 127.0.0.1:target."""

    def __init__(self, target, delay):
        self.target, self.delay = target, delay
        self._loop = asyncio.new_event_loop()
        self._listener = socket.create_server(("127.0.0.1", 0))
        self.port = self._listener.getsockname()[1]
        self._thread = threading.Thread(target=self._run, daemon=True)

    def __enter__(self):
        self._thread.start()
        return self

    def __exit__(self, *_):
        self._loop.call_soon_threadsafe(self._loop.stop)
        self._thread.join()
        self._loop.close()
        self._listener.close()

    def _run(self):
        asyncio.set_event_loop(self._loop)
        self._loop.run_until_complete(asyncio.start_server(self._serve, sock=self._listener))
        self._loop.run_forever()
        for task in asyncio.all_tasks(self._loop):
            task.cancel()
            with contextlib.suppress(asyncio.CancelledError):
                self._loop.run_until_complete(task)

    async def _serve(self, *client):
        server = await asyncio.open_connection("127.0.0.1", self.target)
        for _, writer in (client, server):
            writer.get_extra_info("socket").setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        await asyncio.gather(self._carry(client, server), self._carry(server, client))

    async def _carry(self, source, sink):
        """From one end to the other, until the source ends."""
        (reader, acknowledging), (_, writer) = source, sink
        way = Way(writer, self.delay)
        delivery = asyncio.ensure_future(way.deliver())
        with contextlib.suppress(ConnectionError):
            while data := await reader.read(READ_SIZE):
                acknowledging.get_extra_info("socket").setsockopt(socket.IPPROTO_TCP, socket.TCP_QUICKACK, 1)
                await way.put(data)
        await way.put(b"")
        await delivery


class Way:
    """The bytes that are on the way in one direction, each piece with the time at which it arrives."""

    def __init__(self, writer, delay):
        self.writer, self.delay = writer, delay
        self.pieces, self.held = collections.deque(), 0
        self.changed = asyncio.Condition()

    async def put(self, data):
        async with self.changed:
            await self.changed.wait_for(lambda: self.held < HELD_MOST)
            self.pieces.append((asyncio.get_running_loop().time() + self.delay, data))
            self.held += len(data)
            self.changed.notify_all()

    async def take(self):
        async with self.changed:
            await self.changed.wait_for(lambda: self.pieces)
            arrival, data = self.pieces.popleft()
            self.held -= len(data)
            self.changed.notify_all()
            return arrival, data

    async def deliver(self):
        """Until the end of the stream, which goes the same way as the bytes."""
        with contextlib.suppress(ConnectionError):
            while True:
                arrival, data = await self.take()
                await asyncio.sleep(arrival - asyncio.get_running_loop().time())
                if not data:
                    break
                self.writer.write(data)
                await self.writer.drain()
        self.writer.close()
