/remember/:10
*:A:1:never:never
