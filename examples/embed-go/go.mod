module example.org/embed

go 1.19
