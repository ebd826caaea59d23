-- Starts the language server of korvelcheck for schema files and project files, in Neovim 0.7 and later.
local config = { name = 'korvelcheck', cmd = { 'korvelcheck', 'lsp' } }
local client -- its number

vim.api.nvim_create_autocmd({ 'BufReadPost', 'BufWritePost' }, {
  pattern = { '*.xml', 'korvelcheck.toml' },
  callback = function(event)
    if event.match:match('%.xml$') and vim.fn.search('<metalib\\>', 'cnw') == 0 then return end
    if not client or vim.lsp.client_is_stopped(client) then client = vim.lsp.start_client(config) end
    vim.lsp.buf_attach_client(event.buf, client)
    vim.bo[event.buf].omnifunc = 'v:lua.vim.lsp.omnifunc'
  end,
})

-- Shows the summary of each table when the server has checked the file.
vim.api.nvim_create_autocmd('DiagnosticChanged', {
  pattern = '*.xml',
  callback = function(event)
    local is_current = event.match == vim.api.nvim_buf_get_name(0)
    if is_current and client and vim.lsp.buf_is_attached(0, client) then vim.lsp.codelens.refresh() end
  end,
})
