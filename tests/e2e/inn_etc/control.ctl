all:*:*:drop
